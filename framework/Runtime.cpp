#include "framework/Runtime.h"

#include <cassert>
#include <utility>

namespace kqu {

namespace {
Runtime* current = nullptr;
}

Runtime::Runtime(platform::Platform platform)
    : platform_(std::move(platform)), loop_(platform_.waiting) {
    assert(current == nullptr);
    current = this;
    for (platform::EventSource* source : platform_.sources)
        sources_.push_back(loop_.Watch(*source));
}

Runtime::~Runtime() {
    current = nullptr;
}

Runtime& Runtime::Current() {
    assert(current != nullptr);
    return *current;
}

} // namespace kqu
