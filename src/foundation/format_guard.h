// Keeps the number format of one table from leaking into the next.
#pragma once

#include <ios>
#include <ostream>

namespace mnd {

// Saves flags, precision, width and fill of a stream, resets it to the defaults of a
// fresh stream, and puts everything back when it goes out of scope.
class FormatGuard {
public:
    explicit FormatGuard(std::ostream& out)
        : out_(out),
          flags_(out.flags()),
          precision_(out.precision()),
          width_(out.width()),
          fill_(out.fill()) {
        out_.flags(std::ios_base::skipws | std::ios_base::dec);
        out_.precision(6);
        out_.width(0);
        out_.fill(' ');
    }
    ~FormatGuard() {
        out_.flags(flags_);
        out_.precision(precision_);
        out_.width(width_);
        out_.fill(fill_);
    }
    FormatGuard(const FormatGuard&) = delete;
    FormatGuard& operator=(const FormatGuard&) = delete;

private:
    std::ostream& out_;
    std::ios_base::fmtflags flags_;
    std::streamsize precision_;
    std::streamsize width_;
    char fill_;
};

}  // namespace mnd
