// The way in which code of the lowest level reports a numbered message.
//
// The error channel stands above this level; it installs itself here, so that a numerical
// routine can report without knowing it.
#pragma once

namespace mnd {

// Kind of a report; the values index the tags of the log.
enum ErrorType : int { Warning = 0, Error = 1, Memory = 2, Info = 3, Debug = 4 };

// Receives a report: its kind, the reporting function as text, the code of its message.
using ReportHook = void (*)(ErrorType type, const char* function_name, int code);

// Installs the receiver of all later reports; null drops them. Returns the one before.
ReportHook set_report_hook(ReportHook hook);

// Hands a report to the receiver in force.
void report(ErrorType type, const char* function_name, int code);

}  // namespace mnd
