#pragma once

namespace kqu {

/// One visitor for std::visit, made of a function for each type.
template <class... Functions>
struct Overloaded : Functions... {
    using Functions::operator()...;
};
template <class... Functions>
Overloaded(Functions...) -> Overloaded<Functions...>;

} // namespace kqu
