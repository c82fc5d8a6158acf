# One interface target that every target of the project links: warnings, protections, sanitizers,
# sections, and what makes two builds of one commit equal.
add_library(ovisk_options INTERFACE)
target_compile_features(ovisk_options INTERFACE cxx_std_20)
target_include_directories(ovisk_options INTERFACE ${PROJECT_SOURCE_DIR} ${PROJECT_SOURCE_DIR}/src)

if(MSVC)
    target_compile_options(ovisk_options INTERFACE /W4 /permissive- /utf-8 /EHsc /Brepro)
    target_link_options(ovisk_options INTERFACE /Brepro)
    target_compile_definitions(ovisk_options INTERFACE _CRT_SECURE_NO_WARNINGS ZBOVISK_OTHER_STRING)
else()
    target_compile_options(ovisk_options INTERFACE
        -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror
        $<$<NOT:$<BOOL:$<TARGET_PROPERTY:OVISK_VISIBLE>>>:-fvisibility=hidden>
        -ffunction-sections -fdata-sections -ffile-prefix-map=${PROJECT_SOURCE_DIR}=.)
    if(CMAKE_CXX_COMPILER_ID MATCHES Clang)
        target_compile_options(ovisk_options INTERFACE -Wthread-safety)
    endif()
endif()

if(WIN32)
    target_compile_definitions(ovisk_options INTERFACE
        UNICODE _UNICODE NOMINMAX WIN32_LEAN_AND_MEAN _WIN32_WINNT=0x0601)
    if(MINGW)
        # libgcc, libstdc++ and winpthread go in; gcc 12 sees false overlaps in its own std::string.
        target_link_options(ovisk_options INTERFACE -static -Wl,--no-insert-timestamp)
        target_compile_options(ovisk_options INTERFACE -Wno-restrict)
    endif()
else()
    find_package(Threads REQUIRED)
    target_link_libraries(ovisk_options INTERFACE Threads::Threads)
    # A library that holds unique symbols is never unloaded, and the module has to be.
    if(CMAKE_CXX_COMPILER_ID STREQUAL GNU)
        target_compile_options(ovisk_options INTERFACE -fno-gnu-unique -Wno-restrict)
    endif()
endif()

set(OVISK_SANITIZE "" CACHE STRING "Sanitizers to build with, as in -fsanitize=")
if(OVISK_SANITIZE)
    # The record is byte-packed on purpose, so its texts and numbers lie unaligned.
    target_compile_options(ovisk_options INTERFACE
        -fsanitize=${OVISK_SANITIZE} -fno-sanitize=alignment
        -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_link_options(ovisk_options INTERFACE -fsanitize=${OVISK_SANITIZE})
elseif(NOT MSVC)
    # The sanitizers check more than these do. Without optimisation the second only warns.
    target_compile_options(ovisk_options INTERFACE
        -fstack-protector-strong $<$<NOT:$<CONFIG:Debug>>:-D_FORTIFY_SOURCE=2>)
    target_link_options(ovisk_options INTERFACE -fstack-protector-strong)
endif()

option(OVISK_COVERAGE "Count what the tests run of the module (clang)" OFF)
if(OVISK_COVERAGE)
    target_link_options(ovisk_options INTERFACE -fprofile-instr-generate)
endif()

option(OVISK_FUZZ "Build the fuzz targets (clang)" OFF)
if(OVISK_FUZZ)
    target_compile_options(ovisk_options INTERFACE -fsanitize=fuzzer-no-link)
endif()
