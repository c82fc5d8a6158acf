#pragma once

/// Runs work that may throw where nothing may: the host's frames or the system's lie above. What is
/// thrown becomes the failed answer.
template <typename Answer, typename Work>
Answer Guarded(Answer failed, const Work& work) noexcept {
    try {
        return work();
    } catch (...) {
        return failed;
    }
}
