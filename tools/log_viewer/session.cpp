#include "log_viewer/session.h"

#include "host/interrupt.h"

namespace log_viewer {

bool Session::IsOver() const {
    const auto age = std::chrono::steady_clock::now() - start;
    return options.once || host_tool::Interrupted() ||
           (options.seconds != 0 && age >= std::chrono::seconds(options.seconds));
}

}  // namespace log_viewer
