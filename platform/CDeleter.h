#pragma once

#include <memory>

namespace kqu::platform {

/// The one deleter for objects of C libraries: `CPointer<cairo_t, cairo_destroy>` owns a cairo_t.
template <auto Free>
struct CDeleter {
    template <class T>
    void operator()(T* object) const noexcept {
        Free(object);
    }
};

template <class T, auto Free>
using CPointer = std::unique_ptr<T, CDeleter<Free>>;

} // namespace kqu::platform
