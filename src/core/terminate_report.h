#pragma once
// How a program ends on an exception nobody caught: the exception's type and text and a
// backtrace go to standard error, then the program aborts as it would have anyway.
namespace kdx {

// Makes the report the std::terminate handler. `program` (a literal, kept) starts its
// first line: "kdxtool: uncaught exception std::runtime_error: ...".
void installTerminateReport(const char* program);

} // namespace kdx
