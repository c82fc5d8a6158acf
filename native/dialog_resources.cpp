#include "native/dialog_resources.h"

#include <dlfcn.h>

#include <algorithm>
#include <mutex>

#include "native/handle.h"

namespace posix {
namespace {

constinit std::mutex setsLock;
constinit ResourceSet* sets = nullptr;

template <typename Template>
const Template* FindNumber(std::span<const Template> templates, LPCWSTR number) {
    const auto found = std::ranges::find_if(
        templates, [number](const Template& one) { return MAKEINTRESOURCEW(one.id) == number; });
    return found == templates.end() ? Fail<const Template*>(ERROR_RESOURCE_NAME_NOT_FOUND, nullptr)
                                    : &*found;
}

}  // namespace

ResourceSet::ResourceSet(std::span<const DialogTemplate> dialogs,
                         std::span<const PictureTemplate> pictures)
    : dialogs_(dialogs), pictures_(pictures) {
    Dl_info module{};
    dladdr(this, &module);
    module_ = reinterpret_cast<HINSTANCE>(module.dli_fbase);
    const std::lock_guard hold(setsLock);
    next_ = sets;
    sets = this;
}

ResourceSet::~ResourceSet() {
    const std::lock_guard hold(setsLock);
    ResourceSet** link = &sets;
    while (*link != this) {
        link = &(*link)->next_;
    }
    *link = next_;
}

const ResourceSet* FindSet(HINSTANCE instance) {
    const std::lock_guard hold(setsLock);
    for (const ResourceSet* set = sets; set != nullptr; set = set->next_) {
        if (set->module_ == instance) {
            return set;
        }
    }
    const bool single = sets != nullptr && sets->next_ == nullptr;
    return single ? sets : Fail<ResourceSet*>(ERROR_RESOURCE_NAME_NOT_FOUND, nullptr);
}

const DialogTemplate* FindDialog(HINSTANCE instance, LPCWSTR number) {
    const ResourceSet* set = FindSet(instance);
    return set == nullptr ? nullptr : FindNumber(set->dialogs_, number);
}

const PictureTemplate* FindPicture(HINSTANCE instance, LPCWSTR number) {
    const ResourceSet* set = FindSet(instance);
    return set == nullptr ? nullptr : FindNumber(set->pictures_, number);
}

}  // namespace posix
