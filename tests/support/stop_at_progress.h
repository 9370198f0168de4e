// A run that is stopped by a progress message on the console.
#pragma once

#include <iostream>
#include <streambuf>

#include "run/process.h"
#include "run/settings.h"

namespace mnd_test {

// As long as it lives, standard output is taken in; the first message after a unit of work sets the stop
// flag of the run.
class StopAtProgress : public std::streambuf {
public:
    //   units   of work planned, 100 at most: each changes the message
    StopAtProgress(mnd::settings& s, double units)
        : settings_(s),
          silent_(mnd::silentMendrake),
          work_to_do_(mnd::settings::global_work_to_do),
          work_done_(mnd::settings::global_work_done) {
        mnd::settings::set_message("A run that will be stopped");
        mnd::settings::global_work_to_do = units;
        mnd::settings::global_work_done = 0.0;
        mnd::silentMendrake = false;
        console_ = std::cout.rdbuf(this);
    }
    ~StopAtProgress() override {
        std::cout.rdbuf(console_);
        mnd::silentMendrake = silent_;
        mnd::settings::global_work_to_do = work_to_do_;
        mnd::settings::global_work_done = work_done_;
    }
    StopAtProgress(const StopAtProgress&) = delete;
    StopAtProgress& operator=(const StopAtProgress&) = delete;

protected:
    int_type overflow(int_type c) override {
        if (mnd::settings::global_work_done >= 1.0) settings_.stop_computations = 1;
        return traits_type::not_eof(c);
    }

private:
    mnd::settings& settings_;
    std::streambuf* console_ = nullptr;  // not owned: what standard output writes to
    bool silent_;
    double work_to_do_;
    double work_done_;
};

}  // namespace mnd_test
