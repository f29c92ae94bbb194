#include "framework/ui/ResourceFork.h"

#include "framework/ui/Picture.h"
#include "platform/interfaces/NativeWindow.h"

namespace kqu {

namespace {
std::span<const std::byte> Embedded(int id, int scale) {
    static const auto pictures = EmbeddedPictures();
    const auto found = pictures.find({id, scale});
    return found == pictures.end() ? std::span<const std::byte>() : found->second;
}
} // namespace

Ref<Picture> ResourceFork::GetPicture(int id) const {
    if (const auto changed = changed_.find(id); changed != changed_.end())
        return Picture::FromPng(changed->second, 1);
    return Picture::FromPng(Embedded(id, Scale()), Scale());
}

int ResourceFork::Scale() {
    return platform::DeviceScale();
}

Ref<ResourceFork> appResourceForkGetter() {
    static const auto fork = std::make_shared<ResourceFork>();
    return fork;
}

} // namespace kqu
