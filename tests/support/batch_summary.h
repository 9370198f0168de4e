// A file of a batch summary, as a test reads it.
#pragma once

#include <fstream>
#include <string>

#include "run/settings.h"
#include "support/temp_folder.h"

namespace mnd_test {

// Takes the rows of one summary, of the project "dir/lakes.mnp", for as long as it lives.
class BatchSummary {
public:
    //   stream   pointer of the summary, such as &mnd::ofs_tajima
    explicit BatchSummary(std::ofstream** stream)
        : file_(folder_ / "rows.sum"),
          stream_(stream),
          before_(*stream),
          project_before_(mnd::settings::input_file) {
        *stream_ = &file_;
        mnd::settings::input_file = project_.data();
    }
    ~BatchSummary() {
        *stream_ = before_;
        mnd::settings::input_file = project_before_;
    }
    BatchSummary(const BatchSummary&) = delete;
    BatchSummary& operator=(const BatchSummary&) = delete;

    // All rows, each without the name of the project and the tab behind it.
    std::string rows() {
        file_.flush();
        const std::string named = read_text(folder_ / "rows.sum");
        const std::string name = "\"" + project_ + "\"\t";
        std::string rows;
        for (std::size_t at = 0; at < named.size();) {
            const std::size_t end = named.find('\n', at) + 1;
            if (end == 0 || named.compare(at, name.size(), name) != 0)
                return "not a row: " + named.substr(at);
            rows += named.substr(at + name.size(), end - at - name.size());
            at = end;
        }
        return rows;
    }

private:
    TempFolder folder_;
    std::ofstream file_;
    std::string project_ = "dir/lakes.mnp";
    std::ofstream** stream_;  // not owned: the pointer of the summary
    std::ofstream* before_;   // not owned
    char* project_before_;    // not owned
};

}  // namespace mnd_test
