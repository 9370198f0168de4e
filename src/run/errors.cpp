#include "run/errors.h"

#include <iomanip>
#include <streambuf>

#include "foundation/format_guard.h"
#include "run/messages.h"

namespace mnd {

namespace {

// Takes every character and keeps none.
class NullBuffer : public std::streambuf {
protected:
    int_type overflow(int_type c) override { return traits_type::not_eof(c); }
    std::streamsize xsputn(const char*, std::streamsize n) override { return n; }
};

struct TypeOfReport {
    const char* tag;
    int* counter;  // not owned
};

void forward_report(ErrorType type, const char* function_name, int code) {
    E.error(type, function_name, code);
}

// The line of a report in the result document.
void write_to_results(std::ostream& out, const TypeOfReport& kind, const my_string& text) {
    const FormatGuard guard(out);
    out << kind.tag << *kind.counter - 1 << "] : " << text << '\n';
}

}  // namespace

std::ostream& null_stream() {
    // Never destroyed: the destructor of a static object may still write progress text.
    static std::ostream* const stream = new std::ostream(new NullBuffer);
    return *stream;
}

Errors& error_channel() {
    static Errors channel;
    [[maybe_unused]] static const ReportHook before = set_report_hook(forward_report);
    return channel;
}

Errors::Errors() : messages(210, 10) {
    for (int code = 0; code < kNumMessages; ++code)
        messages.Add(message_text(code));
}

Errors::~Errors() {
    if (this == &E) set_report_hook(nullptr);
    if (_AOS_ == log_stream) _AOS_ = &null_stream();
    delete log_stream;
    log_stream = nullptr;
}

void Errors::init_log_file(const my_string& path, bool append) {
    const my_string new_path(path);  // `path` may be log_path itself
    delete log_stream;
    log_stream = new std::ofstream;
    log_stream->open(new_path.c_str(), append ? std::ios_base::out | std::ios_base::app : std::ios_base::out);
    log_open = log_stream->is_open() ? 1 : 0;
    log_path = new_path;
    _AOS_ = log_stream;
}

void Errors::CloseLog_file() {
    if (log_stream != nullptr) log_stream->close();
}

void Errors::error(ErrorType type, const my_string& function_name, int code) {
    static int mess_count = 1;
    static int error_count = 1;
    static int warning_count = 1;
    static int info_count = 1;
    static int memory_count = 1;

    if (log_open == 0) return;
    if (code == -1) {
        mess_count = error_count = warning_count = info_count = memory_count = 1;
        return;
    }
    // Tags by type. A debug line takes a number of the errors, and so does an unknown type.
    const TypeOfReport kinds[] = {{" #[WARNING # ", &warning_count},
                                  {" #[ERROR # ", &error_count},
                                  {" #[MEMORY # ", &memory_count},
                                  {" #[INFO # ", &info_count},
                                  {" #[DEBUG # ", &error_count}};
    const TypeOfReport& kind = kinds[type < Warning || type > Debug ? Error : type];
    const my_string text =
        code < 0 || code >= messages.count ? my_string(message_text(code)) : messages[code];

    {
        const FormatGuard guard(*log_stream);
        *log_stream << std::right << std::setfill(' ') << std::setw(4) << mess_count++;
        *log_stream << kind.tag << (*kind.counter)++ << "] ";
        if (type == Debug) {
            *log_stream << function_name << std::endl;
        } else {
            *log_stream << "from function \"" << function_name << "\" : " << text << std::endl;
        }
    }
    if (result_stream != nullptr && type != Debug) write_to_results(*result_stream, kind, text);
    if (type == Memory) throw ExceptionType();
}

}  // namespace mnd
