#pragma once

#include <span>
#include <string_view>

#include "platform/win32.h"

/// The dialog templates and pictures of a module, which the build makes from its resource
/// description. Sizes are in pixels.
namespace posix {

struct ControlTemplate {
    std::u16string_view className;
    int id;
    std::u16string_view text;
    RECT place;  // Within the dialog's client area.
    DWORD style;
};

struct DialogTemplate {
    int id;
    std::u16string_view caption;
    LONG width;  // Of the client area.
    LONG height;
    DWORD style;
    std::span<const ControlTemplate> controls;
};

struct PictureTemplate {
    int id;
    LONG width;
    LONG height;
    int depth;  // Bits a pixel.
};

/// Makes the templates of the module that this object lies in known, for as long as it lives. One
/// static object per module; the templates have to outlive it.
class ResourceSet {
  public:
    ResourceSet(std::span<const DialogTemplate> dialogs, std::span<const PictureTemplate> pictures);
    ~ResourceSet();
    ResourceSet(const ResourceSet&) = delete;
    ResourceSet& operator=(const ResourceSet&) = delete;

  private:
    friend const ResourceSet* FindSet(HINSTANCE instance);
    friend const DialogTemplate* FindDialog(HINSTANCE instance, LPCWSTR number);
    friend const PictureTemplate* FindPicture(HINSTANCE instance, LPCWSTR number);

    const std::span<const DialogTemplate> dialogs_;
    const std::span<const PictureTemplate> pictures_;
    HINSTANCE module_ = nullptr;
    ResourceSet* next_ = nullptr;
};

/// A template of the module with that handle or, if no templates belong to it, of the only module
/// that has some. Null with ERROR_RESOURCE_NAME_NOT_FOUND.
const DialogTemplate* FindDialog(HINSTANCE instance, LPCWSTR number);
const PictureTemplate* FindPicture(HINSTANCE instance, LPCWSTR number);

}  // namespace posix
