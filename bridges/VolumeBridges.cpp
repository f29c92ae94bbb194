#include "bridges/VolumeBridges.h"

#include "framework/FunctionLookup.h"

#include <memory>

namespace kqu {

namespace {
constexpr int stringReferenceSize = 4;
constexpr std::int32_t textBufferSize = 1024;
constexpr std::uint32_t utf8Encoding = 0x08000100;
} // namespace

std::string GetBSDNameForVRef(std::int32_t vRefNum, bool release) {
    const auto reference = std::make_shared<MemoryBlock>(stringReferenceSize);
    functions::StringHandle diskID = 0;
    if (Lookup<functions::FSCopyDiskIDForVolume>()(vRefNum, &diskID) != 0)
        return {};
    reference->SetInt32Value(0, diskID);
    return CFStrRefToStr(reference, release);
}

std::string CFStrRefToStr(const Ref<MemoryBlock>& reference, bool release) {
    const auto buffer = std::make_shared<MemoryBlock>(textBufferSize);
    const std::int32_t string = reference->Int32Value(0);
    if (!Lookup<functions::CFStringGetCStringOfCarbon>()(string, buffer->CharData(), textBufferSize,
                                                         utf8Encoding))
        return {};
    if (release)
        Lookup<functions::CFRelease>()(string);
    return buffer->CString(0);
}

} // namespace kqu
