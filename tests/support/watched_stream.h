// A text stream that acts when a given text passes through it.
//
// Progress texts mark the steps of a run. A test that watches for one can step in there: raise a
// flag, change the data, throw.
#pragma once

#include <functional>
#include <iostream>
#include <ostream>
#include <streambuf>
#include <string>
#include <utility>
#include <vector>

#include "run/errors.h"

namespace mnd_test {

class WatchingBuffer : public std::streambuf {
public:
    // Calls `action` once, as soon as `text` has passed. What the action throws leaves through
    // the output operation.
    void when(const std::string& text, std::function<void()> action) {
        watches_.push_back({text, std::move(action), false});
    }
    const std::string& text() const { return text_; }

protected:
    int_type overflow(int_type c) override {
        if (traits_type::eq_int_type(c, traits_type::eof())) return traits_type::not_eof(c);
        text_ += traits_type::to_char_type(c);
        act();
        return c;
    }
    std::streamsize xsputn(const char* s, std::streamsize n) override {
        text_.append(s, static_cast<std::size_t>(n));
        act();
        return n;
    }

private:
    struct Watch {
        std::string text;
        std::function<void()> action;
        bool done;
    };

    void act() {
        for (Watch& watch : watches_) {
            if (watch.done || text_.find(watch.text) == std::string::npos) continue;
            watch.done = true;
            watch.action();
        }
    }

    std::string text_;
    std::vector<Watch> watches_;
};

// Takes the place of the log for as long as it lives.
class WatchedLog {
public:
    WatchedLog() : stream_(&buffer_), before_(mnd::_AOS_) {
        stream_.exceptions(std::ios::badbit);
        mnd::_AOS_ = &stream_;
    }
    ~WatchedLog() { mnd::_AOS_ = before_; }
    WatchedLog(const WatchedLog&) = delete;
    WatchedLog& operator=(const WatchedLog&) = delete;

    void when(const std::string& text, std::function<void()> action) {
        buffer_.when(text, std::move(action));
    }
    const std::string& text() const { return buffer_.text(); }
    bool holds(const std::string& part) const { return text().find(part) != std::string::npos; }
    std::ostream& stream() { return stream_; }

private:
    WatchingBuffer buffer_;
    std::ostream stream_;
    std::ostream* before_;  // not owned: the log before
};

// Takes the place of the standard output for as long as it lives.
class WatchedOutput {
public:
    WatchedOutput() : before_(std::cout.rdbuf(&buffer_)), exceptions_(std::cout.exceptions()) {
        std::cout.exceptions(std::ios::badbit);
    }
    ~WatchedOutput() {
        std::cout.exceptions(std::ios::goodbit);
        std::cout.rdbuf(before_);  // clears the state as well
        std::cout.exceptions(exceptions_);
    }
    WatchedOutput(const WatchedOutput&) = delete;
    WatchedOutput& operator=(const WatchedOutput&) = delete;

    void when(const std::string& text, std::function<void()> action) {
        buffer_.when(text, std::move(action));
    }
    const std::string& text() const { return buffer_.text(); }

private:
    WatchingBuffer buffer_;
    std::streambuf* before_;  // not owned: the buffer of the standard output
    std::ios::iostate exceptions_;
};

}  // namespace mnd_test
