#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

/// Every test program has a machine of its own, made before anything asks for it.
int main(int argc, char** argv) {
    std::string root = (std::filesystem::temp_directory_path() / "zb_machine_XXXXXX").string();
    // NOLINTNEXTLINE(concurrency-mt-unsafe): there is one thread yet.
    if (mkdtemp(root.data()) == nullptr || setenv("ZB_MACHINE_ROOT", root.c_str(), 1) != 0) {
        std::perror(root.c_str());
        return 1;
    }
    testing::InitGoogleTest(&argc, argv);
    const int result = RUN_ALL_TESTS();
    std::error_code ignored;
    std::filesystem::remove_all(root, ignored);
    return result;
}
