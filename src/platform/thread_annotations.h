#pragma once

/// Clang's thread-safety attributes: they state which lock guards what, and `-Wthread-safety`
/// holds the code to it. Empty for compilers that do not know them, and on Windows, whose own
/// CRITICAL_SECTION carries no attribute.

#if defined(__clang__) && !defined(_WIN32)
#define ZB_THREAD_ATTRIBUTE(x) __attribute__((x))
#else
#define ZB_THREAD_ATTRIBUTE(x)
#endif

#define ZB_CAPABILITY(name) ZB_THREAD_ATTRIBUTE(capability(name))
#define ZB_SCOPED_CAPABILITY ZB_THREAD_ATTRIBUTE(scoped_lockable)
#define ZB_GUARDED_BY(lock) ZB_THREAD_ATTRIBUTE(guarded_by(lock))
#define ZB_REQUIRES(...) ZB_THREAD_ATTRIBUTE(requires_capability(__VA_ARGS__))
#define ZB_EXCLUDES(...) ZB_THREAD_ATTRIBUTE(locks_excluded(__VA_ARGS__))
#define ZB_ACQUIRE(...) ZB_THREAD_ATTRIBUTE(acquire_capability(__VA_ARGS__))
#define ZB_TRY_ACQUIRE(...) ZB_THREAD_ATTRIBUTE(try_acquire_capability(__VA_ARGS__))
#define ZB_RELEASE(...) ZB_THREAD_ATTRIBUTE(release_capability(__VA_ARGS__))
#define ZB_NO_THREAD_SAFETY_ANALYSIS ZB_THREAD_ATTRIBUTE(no_thread_safety_analysis)
