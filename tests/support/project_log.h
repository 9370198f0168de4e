// The log of a project, as a test reads it.
#pragma once

#include <cstdio>
#include <string>

#include "run/errors.h"
#include "support/text_files.h"

namespace mnd_test {

// An open log for as long as it lives; reports and progress texts both go there.
class ProjectLog {
public:
    ProjectLog() : path_(unique_path("project_log")) { mnd::E.init_log_file(path_.c_str(), false); }
    ~ProjectLog() {
        mnd::E.CloseLog_file();
        mnd::E.log_open = 0;
        mnd::_AOS_ = &mnd::null_stream();
        std::remove(path_.c_str());
    }
    ProjectLog(const ProjectLog&) = delete;
    ProjectLog& operator=(const ProjectLog&) = delete;

    std::string text() const {
        mnd::E.log_stream->flush();
        return read_file(path_);
    }
    bool holds(const std::string& part) const { return text().find(part) != std::string::npos; }
    // Whether a report of this kind stands there: the tag, then source and message.
    bool reports(const char* tag, const std::string& source, const std::string& message) const {
        const std::string whole = text();
        const std::size_t at = whole.find("from function \"" + source + "\" : " + message + "\n");
        if (at == std::string::npos) return false;
        const std::size_t line = whole.rfind('\n', at) == std::string::npos ? 0 : whole.rfind('\n', at);
        return whole.find(std::string(" #[") + tag, line) < at;
    }

private:
    std::string path_;
};

}  // namespace mnd_test
