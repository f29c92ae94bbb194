#pragma once

#include <string>
#include <string_view>

namespace kqu::run {

/// Takes out of a tool's output what the tool prints only because it was asked to by us.
class OutputFilter {
  public:
    OutputFilter() = default;
    OutputFilter(const OutputFilter&) = delete;
    OutputFilter& operator=(const OutputFilter&) = delete;
    virtual ~OutputFilter() = default;

    /// Appends what of the bytes is to go on.
    virtual void Pass(std::string_view bytes, std::string& out) = 0;
    /// The stream has ended: appends what was held back.
    virtual void End(std::string& out) = 0;
};

} // namespace kqu::run
