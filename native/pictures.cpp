#include "native/pictures.h"

#include "native/handle.h"

namespace posix {

constinit std::atomic<int> loadedPictures{0};

namespace {

class Picture : public Object {
  public:
    static constexpr Kind OwnKind = Kind::Picture;

    explicit Picture(const PictureTemplate& shown) : Object(OwnKind), shown_(shown) {
        ++loadedPictures;
    }
    ~Picture() override { --loadedPictures; }

    const PictureTemplate& Shown() const { return shown_; }

  private:
    const PictureTemplate shown_;
};

// A picture's handle is the one behind it plus one, so that CloseHandle does not take it.
HBITMAP ToBitmap(HANDLE handle) {
    return reinterpret_cast<HBITMAP>(reinterpret_cast<std::uintptr_t>(handle) + 1);
}

HANDLE Behind(HGDIOBJ bitmap) {
    return reinterpret_cast<HANDLE>(reinterpret_cast<std::uintptr_t>(bitmap) - 1);
}

}  // namespace

std::optional<PictureTemplate> PictureOf(HBITMAP picture) {
    const UseOf<Picture> use(Behind(picture));
    return use ? std::optional(use->Shown()) : std::nullopt;
}

}  // namespace posix

HBITMAP LoadBitmapW(HINSTANCE instance, LPCWSTR number) {
    return posix::Guarded(HBITMAP{nullptr}, [&]() -> HBITMAP {
        const posix::PictureTemplate* shown = posix::FindPicture(instance, number);
        if (shown == nullptr) {
            return nullptr;
        }
        const HANDLE handle = posix::NewHandle(std::make_unique<posix::Picture>(*shown));
        return handle == nullptr ? nullptr : posix::ToBitmap(handle);
    });
}

BOOL DeleteObject(HGDIOBJ picture) {
    if (!posix::UseOf<posix::Picture>(posix::Behind(picture))) {
        return FALSE;
    }
    return CloseHandle(posix::Behind(picture));
}
