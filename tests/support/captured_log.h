// Catches what the code under test writes to the log.
#pragma once

#include <sstream>
#include <string>

#include "run/errors.h"

namespace mnd_test {

// Takes the place of the log for as long as it lives.
class CapturedLog {
public:
    CapturedLog() : before_(mnd::_AOS_) { mnd::_AOS_ = &text_; }
    ~CapturedLog() { mnd::_AOS_ = before_; }
    CapturedLog(const CapturedLog&) = delete;
    CapturedLog& operator=(const CapturedLog&) = delete;

    std::string text() const { return text_.str(); }
    bool holds(const std::string& part) const { return text().find(part) != std::string::npos; }

private:
    std::ostringstream text_;
    std::ostream* before_;  // not owned: the log before
};

}  // namespace mnd_test
