#include "foundation/report.h"

namespace mnd {

namespace {

ReportHook current_hook = nullptr;

}  // namespace

ReportHook set_report_hook(ReportHook hook) {
    const ReportHook before = current_hook;
    current_hook = hook;
    return before;
}

void report(ErrorType type, const char* function_name, int code) {
    if (current_hook != nullptr) current_hook(type, function_name, code);
}

}  // namespace mnd
