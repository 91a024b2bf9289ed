// A handler that faults is abandoned and the program goes on; only a fault that is not
// the host's own (a defect) reaches the log, under the handler's name.
#include "core/host_error.h"
#include "platform/qt_guard.h"

#include <QtGlobal>
#include <gtest/gtest.h>

#include <functional>
#include <new>
#include <stdexcept>
#include <string>
#include <vector>

using namespace kdx;

namespace {

std::vector<std::string> g_warnings;

void collectWarnings(QtMsgType type, const QMessageLogContext&, const QString& text)
{
    if (type == QtWarningMsg) g_warnings.push_back(text.toStdString());
}

} // namespace

TEST(HandlerGuard, HostErrorsAreSilentAndOtherFaultsAreReportedByHandlerName)
{
    struct Case {
        const char* handler;
        std::function<void()> fault;
        const char* warning; // "" when nothing may be reported
    };
    const Case cases[] = {
        {"CommsTimeout_Timer", [] { raiseOverflow(); }, ""},
        {"Freqtb_Click", [] { raiseSubscript(); }, ""},
        {"TestTmr_Timer", [] { raiseDivisionByZero(); }, ""},
        {"ReadConfigcb_Click", [] { throw std::logic_error("bad index 7"); },
         "handler ReadConfigcb_Click abandoned: bad index 7"},
        {"FlushTimer_Timer", [] { throw std::bad_alloc(); }, "handler FlushTimer_Timer abandoned: std::bad_alloc"},
        {"Trimcb_Click", [] { throw 42; }, "handler Trimcb_Click abandoned: an exception of unknown type"},
    };
    const QtMessageHandler previous = qInstallMessageHandler(collectWarnings);
    for (const Case& c : cases) {
        g_warnings.clear();
        int before = 0, after = 0;
        guarded(c.handler, [&] {
            before = 1;
            c.fault();
            after = 1;
        });
        EXPECT_EQ(before, 1) << c.handler << ": what ran before the fault stays done";
        EXPECT_EQ(after, 0) << c.handler << ": the rest of the handler is abandoned";
        if (*c.warning == '\0')
            EXPECT_TRUE(g_warnings.empty()) << c.handler << ": " << (g_warnings.empty() ? "" : g_warnings[0]);
        else EXPECT_EQ(g_warnings, std::vector<std::string>{c.warning}) << c.handler;
    }
    qInstallMessageHandler(previous);
}
