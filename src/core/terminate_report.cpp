#include "core/terminate_report.h"

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <string>

#if __has_include(<cxxabi.h>)
#include <cxxabi.h>
#define KDX_HAVE_CXXABI 1
#endif
#if __has_include(<execinfo.h>)
#include <execinfo.h>
#include <unistd.h>
#define KDX_HAVE_BACKTRACE 1
#endif

namespace kdx {

namespace {

const char* g_program = "kdx";

// The current exception's type as written in the source, where the runtime says.
std::string currentExceptionType()
{
#ifdef KDX_HAVE_CXXABI
    if (const std::type_info* type = abi::__cxa_current_exception_type()) {
        int status = 0;
        char* name = abi::__cxa_demangle(type->name(), nullptr, nullptr, &status);
        std::string result = status == 0 && name ? name : type->name();
        std::free(name);
        return result;
    }
#endif
    return "of an unknown type";
}

[[noreturn]] void report()
{
    if (const std::exception_ptr current = std::current_exception()) {
        const std::string type = currentExceptionType();
        try {
            std::rethrow_exception(current);
        } catch (const std::exception& e) {
            std::fprintf(stderr, "%s: uncaught exception %s: %s\n", g_program, type.c_str(), e.what());
        } catch (...) {
            std::fprintf(stderr, "%s: uncaught exception %s\n", g_program, type.c_str());
        }
    } else {
        std::fprintf(stderr, "%s: terminate called without an exception\n", g_program);
    }
#ifdef KDX_HAVE_BACKTRACE
    void* frames[64];
    const int count = ::backtrace(frames, 64);
    std::fprintf(stderr, "backtrace:\n");
    std::fflush(stderr);
    ::backtrace_symbols_fd(frames, count, STDERR_FILENO);
#endif
    std::abort();
}

} // namespace

void installTerminateReport(const char* program)
{
    g_program = program;
    std::set_terminate(report);
}

} // namespace kdx
