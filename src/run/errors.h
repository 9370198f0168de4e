// The error channel of the process: numbered messages in the log and in the result document.
//
// Any code reports a message by its number with the name of the reporting function. A report
// never changes the flow, except that one of the type `Memory` throws; the reporting code
// decides what to do next. Nothing is shown on the console.
#pragma once

#include <fstream>
#include <ostream>

#include "foundation/arrays.h"
#include "foundation/message_codes.h"
#include "foundation/my_string.h"
#include "foundation/report.h"

namespace mnd {

// Thrown by a report of the type `Memory`, after its line has reached the log.
class ExceptionType {};

// A stream that takes everything and keeps nothing. It lives as long as the process, and
// stands in wherever progress text has no place to go.
std::ostream& null_stream();

// Destination of all progress text: the log, or the null stream as long as there is none.
// Never null. not owned
inline std::ostream* _AOS_ = &null_stream();

class Errors {
public:
    // Fills `messages` in the order of the codes. No log is open.
    Errors();
    // Closes the log; `_AOS_` goes back to the null stream if it pointed there.
    ~Errors();
    Errors(const Errors&) = delete;
    Errors& operator=(const Errors&) = delete;

    // Closes the log that there is and begins a new one at `path`, to which `_AOS_` then
    // points. When the file can't be opened `log_open` is 0, reports vanish, and so does
    // progress text.
    //   append  keep what the file holds, and write behind it
    void init_log_file(const my_string& path, bool append);

    // Closes the stream of the log and changes nothing else: text that comes later is lost
    // without harm, until the next `init_log_file`.
    void CloseLog_file();

    // Reports a message: one line in the log and, while a run is in progress and unless the
    // type is `Debug`, a shorter one in the result document. Reports before the first log
    // vanish and are not counted.
    //   type           also selects the tag and the counter; an unknown one counts as `Error`
    //   function_name  the reporting function as a person would write it; under `Debug` it is
    //                  itself the text
    //   code           a MessageCode; -1 sets all counters back to 1 and writes nothing
    // Throws: ExceptionType when the type is `Memory`
    void error(ErrorType type, const my_string& function_name, int code);

    int log_open = 0;                       // 1 when the log opened
    std::ofstream* log_stream = nullptr;    // owned: the log; null before the first one
    my_string log_path;                     // path of the log
    MY_TArrayAsVector<my_string> messages;  // text of each code
    std::fstream* result_stream = nullptr;  // not owned: the result document, null outside a run

    inline static int ErrorProc = 0;  // stands in the interface; nothing uses it
};

// The one error channel. It is made on first use, so that also code that runs before `main`
// may report, and it receives the reports of `report()`.
Errors& error_channel();
inline Errors& E = error_channel();

}  // namespace mnd
