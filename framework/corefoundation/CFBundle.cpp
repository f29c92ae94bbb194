#include "framework/corefoundation/CFBundle.h"

#include "framework/corefoundation/CFPropertyList.h"
#include "framework/files/BinaryStream.h"

#include <memory>

namespace kqu {

Ref<CFBundle> CFBundle::FromURL(const Ref<CFURL>& url) {
    return url->Item()->IsFolder() ? std::make_shared<CFBundle>(url->Item()) : nullptr;
}

Ref<CFDictionary> CFBundle::InfoDictionary() const {
    const Ref<BinaryStream> stream = folder_->Child("Info.plist")->OpenAsBinaryFile();
    if (!stream)
        return nullptr;
    const Ref<CFObject> list = CFPropertyListParse(*CFData::Make(stream->Read(stream->Length())));
    return std::dynamic_pointer_cast<CFDictionary>(list);
}

} // namespace kqu
