#pragma once

#include <memory>
#include <new>

#include "native/clock.h"
#include "platform/win32.h"

namespace posix {

enum class Kind : std::uint32_t { SerialPort = 1, Thread, Event, Mutex, Mapping, Picture };

/// What stands behind a handle. It lives until its handle is closed and the last call on it ended.
class Object {
  public:
    explicit Object(Kind kind) : kind_(kind) {}
    virtual ~Object() = default;
    Object(const Object&) = delete;
    Object& operator=(const Object&) = delete;

    Kind KindOf() const { return kind_; }

    /// WaitForSingleObject's answer. Kinds that nobody can wait for fail.
    virtual DWORD Wait(Deadline deadline);

  private:
    const Kind kind_;
};

void SetError(DWORD code);

/// Leaves the code for GetLastError and gives the failed answer back.
template <typename Answer>
Answer Fail(DWORD code, Answer answer) {
    SetError(code);
    return answer;
}
inline BOOL Fail(DWORD code) {
    return Fail(code, FALSE);
}

/// The Win32 code for an errno value.
DWORD ErrorOf(int number);

/// Runs a function's work; what it throws becomes an error code and the failed answer.
template <typename Work, typename Answer>
Answer Guarded(Answer failed, const Work& work) {
    try {
        return work();
    } catch (const std::bad_alloc&) {
        return Fail(ERROR_NOT_ENOUGH_MEMORY, failed);
    } catch (...) {
        return Fail(ERROR_GEN_FAILURE, failed);
    }
}

/// Gives an object its handle, which owns it; null with ERROR_NO_SYSTEM_RESOURCES if all are used.
HANDLE NewHandle(std::unique_ptr<Object> object);

/// One use of the object behind a handle, from the making to the end of the scope.
class Use {
  public:
    explicit Use(HANDLE handle);
    ~Use();
    Use(const Use&) = delete;
    Use& operator=(const Use&) = delete;

    /// Null, with ERROR_INVALID_HANDLE left behind, for a handle that is not open.
    Object* Get() const { return object_; }

  private:
    std::size_t slot_ = 0;
    Object* object_ = nullptr;
};

/// A use of an object of one kind: any other counts as an invalid handle.
template <typename T>
class UseOf {
  public:
    explicit UseOf(HANDLE handle) : use_(handle) {
        if (use_.Get() == nullptr || use_.Get()->KindOf() != T::OwnKind) {
            SetError(ERROR_INVALID_HANDLE);
        } else {
            object_ = static_cast<T*>(use_.Get());
        }
    }
    explicit operator bool() const { return object_ != nullptr; }
    T* operator->() const { return object_; }

  private:
    Use use_;
    T* object_ = nullptr;
};

}  // namespace posix
