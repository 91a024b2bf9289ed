#include "core/host_error.h"
#include "fakes/fake_serial_port.h"
#include "fakes/manual_clock.h"
#include "fakes/scripted_dialogs.h"
#include "link/comms_link_window.h"

#include <QCoreApplication>
#include <QDir>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>
#include <QTemporaryDir>
#include <QTimer>
#include <gtest/gtest.h>

#include <fstream>
#include <functional>
#include <iterator>

using namespace kdx;
using namespace kdx::test;
using Bytes = std::vector<uint8_t>;

namespace {

struct CountingSink : MessageSink {
    int cyclic = 0;
    std::function<void()> onCyclic;
    void PutCyclicMsg(const MsgView&) override
    {
        ++cyclic;
        if (onCyclic) onCyclic();
    }
    void PutCyclicQvaneMsg(const MsgView&) override {}
    void PutMemoryMsg(const MsgView&) override {}
    void PutAxisMemoryMsg(const MsgView&) override {}
    void PutMessageReceived(bool) override {}
};

// `count` direct telemetry frames of 49 bytes each.
Bytes frames(int count)
{
    Bytes out;
    for (int i = 0; i < count; ++i) {
        const Bytes f = buildFrame(121, Bytes(45, static_cast<uint8_t>(i)));
        out.insert(out.end(), f.begin(), f.end());
    }
    return out;
}

Bytes readAll(const std::string& path)
{
    std::ifstream f(path, std::ios::binary);
    return Bytes(std::istreambuf_iterator<char>(f), {});
}

bool filled(const QWidget* w, uint32_t bgr)
{
    const Rgb c = fromBgr(bgr);
    return w->palette().color(QPalette::Window) == QColor(c.r, c.g, c.b);
}

struct Rig {
    FakeSerialPort port;
    ScriptedDialogs dialogs;
    CountingSink sink;
    ManualClock clock; // the playback's; `step` is added at every reading
    CommsLink link{port, dialogs, clock};
    QTemporaryDir dir;
    Rig()
    {
        link.setMessageSink(&sink);
        link.Form_Load();
    }
    std::string recording(const Bytes& bytes)
    {
        const std::string path = QDir(dir.path()).filePath("Run 0.Log").toStdString();
        std::ofstream(path, std::ios::binary).write(reinterpret_cast<const char*>(bytes.data()), std::ssize(bytes));
        link.SetInputFilename(path);
        return path;
    }
    int32_t played() const { return link.playback().BytesPlayed; }
    std::string text(const QLabel* l) const { return l->text().toStdString(); }
};

} // namespace

TEST(PlaybackWindow, EachRatePlaysItsBytesPerTick)
{
    struct Case {
        int index;
        const char* caption;
        int interval;
        int frames;        // of 49 bytes
        int64_t clockStep; // ns per reading of the clock
        std::vector<int32_t> afterTicks;
    };
    const Case cases[] = {
        {0, "Max", 1, 100, 0, {4900}},               // the whole recording when time allows
        {0, "Max", 1, 100, 1'000'000, {1024, 2048}}, // 4 ms slices of passes
        {0, "Max", 1, 3000, 0, {98048, 98304}},      // a burst of 2000 messages, then a pass a tick
        {1, " x2", 32, 100, 0, {256, 512}},
        {2, "x1", 64, 100, 0, {256, 512}},
        {3, "x 0.5", 256, 100, 0, {256, 512}},
        {2, "x1", 64, 0, 0, {0}},
    };
    for (const Case& c : cases) {
        Rig r;
        r.clock.step = c.clockStep;
        r.recording(frames(c.frames));
        r.link.Rateob[static_cast<std::size_t>(c.index)]->click();
        r.link.StartLogIn->click();
        EXPECT_EQ(r.link.FileInputTimer->interval(), c.interval) << c.caption;
        std::vector<int32_t> played;
        for (std::size_t i = 0; i < c.afterTicks.size(); ++i) {
            r.link.FileInputTimer_Timer();
            played.push_back(r.played());
        }
        EXPECT_EQ(played, c.afterTicks) << c.caption;
        EXPECT_EQ(r.sink.cyclic, played.back() / 49) << c.caption;
    }
}

TEST(PlaybackWindow, AtMaxTheEventLoopRunsBetweenSlicesAndCarriesPlaybackToTheEnd)
{
    Rig r;
    r.clock.step = 1'000'000;
    r.recording(frames(400)); // 19600 bytes: five slices
    r.link.Rateob[0]->click();
    r.link.StartLogIn->click();
    r.link.FileInputTimer_Timer();
    EXPECT_EQ(r.played(), 1024); // returned after its slice
    for (int i = 0; i < 1000 && r.link.PlaybackActive; ++i) QCoreApplication::processEvents();
    EXPECT_FALSE(r.link.PlaybackActive);
    EXPECT_EQ(r.sink.cyclic, 400);
    EXPECT_EQ(r.text(r.link.KProcessedlab), "19K");
}

TEST(PlaybackWindow, PauseAtMaxStopsTheFeedWithinOnePass)
{
    Rig r;
    r.recording(frames(200));
    r.link.Rateob[0]->click();
    r.link.StartLogIn->click();
    // A pause that comes in while a message is handled stops the tick with that pass.
    r.sink.onCyclic = [&] {
        if (!r.link.playback().PlaybackPaused) r.link.PauseLogIn_Click();
    };
    r.link.FileInputTimer_Timer();
    EXPECT_EQ(r.played(), 256);
    EXPECT_EQ(r.link.PauseLogIn->text(), "Resume");
    r.sink.onCyclic = nullptr;
    r.link.FileInputTimer_Timer();
    EXPECT_EQ(r.played(), 256); // the timer ticks on and reads nothing
    EXPECT_TRUE(r.link.PlaybackActive);
    r.link.PauseLogIn->click();
    EXPECT_EQ(r.link.PauseLogIn->text(), "Pause");
    r.link.FileInputTimer_Timer();
    EXPECT_EQ(r.played(), 9800);
    EXPECT_EQ(r.sink.cyclic, 200);
}

TEST(PlaybackWindow, OneKilobyteShowsOneKThenStopsAndThePortFeedsAgain)
{
    Rig r;
    const Bytes frame = frames(1);
    Bytes data = frames(20); // 980 bytes of frames, then 44 of noise
    data.resize(1024, 0x11);
    r.recording(data);
    r.link.StartLogIn->click();
    EXPECT_TRUE(filled(r.link.DoingInFile, CommsLink::PlayingColour));
    r.port.deliver(frame); // the port's bytes are read and dropped meanwhile
    for (int i = 0; i < 3; ++i) r.link.FileInputTimer_Timer();
    EXPECT_EQ(r.text(r.link.KProcessedlab), "0K");
    EXPECT_TRUE(r.link.PlaybackActive);
    r.link.FileInputTimer_Timer();
    EXPECT_EQ(r.text(r.link.KProcessedlab), "1K");
    EXPECT_FALSE(r.link.PlaybackActive);
    EXPECT_FALSE(r.link.FileInputTimer->isActive());
    EXPECT_TRUE(filled(r.link.DoingInFile, CommsLink::IdleColour));
    EXPECT_EQ(r.sink.cyclic, 20);
    r.port.deliver(frame);
    EXPECT_EQ(r.sink.cyclic, 21);
    // Played again: the count changes at the next whole kilobyte, not at Start.
    r.link.StartLogIn->click();
    r.link.FileInputTimer_Timer();
    EXPECT_EQ(r.text(r.link.KProcessedlab), "1K");
    EXPECT_EQ(r.played(), 256);
}

TEST(PlaybackWindow, AFileThatCannotBeOpenedIsReportedAndDoesNotPlay)
{
    Rig r;
    r.link.SetInputFilename(QDir(r.dir.path()).filePath("missing.Log").toStdString());
    r.link.StartLogIn->click();
    ASSERT_EQ(r.dialogs.boxes.size(), 1u);
    EXPECT_EQ(r.dialogs.boxes[0].prompt, "Error opening data file: No such file or directory");
    EXPECT_EQ(r.dialogs.boxes[0].style, box::Critical);
    EXPECT_FALSE(r.link.PlaybackActive);
    EXPECT_FALSE(r.link.FileInputTimer->isActive());
    EXPECT_TRUE(filled(r.link.DoingInFile, CommsLink::IdleColour));
}

// The copy is made a kilobyte per turn of the event loop, the count shown at each.
TEST(PlaybackWindow, WriteFileCopiesTheMarkedStretchShowingEachKilobyteAndEndsIdle)
{
    Rig r;
    Bytes data(5000);
    for (std::size_t i = 0; i < data.size(); ++i) data[i] = static_cast<uint8_t>(i * 13 + i / 256);
    const std::string path = r.recording(data);
    // Marks taken while playing at "x1".
    r.link.StartLogIn->click();
    r.link.FileInputTimer_Timer();
    r.link.MarkStartcb->click();
    for (int i = 0; i < 5; ++i) r.link.FileInputTimer_Timer();
    r.link.MarkEndcb->click();
    EXPECT_EQ(r.text(r.link.MarkStarttb), "0K");
    EXPECT_EQ(r.text(r.link.MarkEndtb), "1K");
    struct Case {
        int32_t start, end;             // -1: as marked above
        std::vector<std::string> shown; // Trimtb after each turn
        std::size_t from, copied;
        bool ok;
    };
    const Case cases[] = {
        {-1, -1, {"1K", "1K"}, 257, 1281, true},
        {0, 100, {"1K"}, 1, 101, true}, // overwrites the copy above
        {1500, 4499, {"1K", "2K", "2K"}, 1501, 3000, true},
        {4000, 4999, {"2K"}, 4001, 999, false}, // one byte short
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.start);
        if (c.start >= 0) {
            r.link.playback().MarkStart = c.start;
            r.link.playback().MarkEnd = c.end;
        }
        r.dialogs.boxes.clear();
        r.link.Trimcb->click();
        EXPECT_TRUE(r.link.PlaybackActive) << "as at Start, with the timer off";
        EXPECT_FALSE(r.link.FileInputTimer->isActive());
        std::vector<std::string> shown;
        while (r.link.trimming()) {
            r.link.trimNextKilobyte();
            shown.push_back(r.text(r.link.Trimtb));
        }
        EXPECT_EQ(shown, c.shown);
        EXPECT_EQ(readAll(path + "_t"), Bytes(data.begin() + static_cast<std::ptrdiff_t>(c.from),
                                              data.begin() + static_cast<std::ptrdiff_t>(c.from + c.copied)));
        QCoreApplication::processEvents();
        ASSERT_EQ(r.dialogs.boxes.size(), c.ok ? 0u : 1u);
        if (!c.ok) {
            EXPECT_EQ(r.dialogs.boxes[0].prompt, "Error during file trimming.");
        }
        EXPECT_FALSE(r.link.PlaybackActive);
        EXPECT_FALSE(r.link.FileInputTimer->isActive());
        EXPECT_TRUE(filled(r.link.DoingInFile, CommsLink::IdleColour));
        EXPECT_EQ(r.played(), 0);
    }
    // Left to the event loop, the copy runs to its end by itself.
    r.link.playback().MarkStart = 0;
    r.link.playback().MarkEnd = 4000;
    r.link.Trimcb->click();
    for (int i = 0; i < 100 && r.link.trimming(); ++i) QCoreApplication::processEvents();
    EXPECT_EQ(readAll(path + "_t").size(), 4001u);
    EXPECT_EQ(r.text(r.link.Trimtb), "3K");
}

// A half frame from the old source must not swallow the first good frame of the new.
TEST(PlaybackWindow, AHalfFrameBeforeAChangeOfSourceDoesNotSwallowTheNextFrame)
{
    const Bytes frame = frames(1);
    const Bytes half(frame.begin(), frame.begin() + 20);
    enum class Change { SelectPort, Start, Stop };
    for (Change change : {Change::SelectPort, Change::Start, Change::Stop}) {
        SCOPED_TRACE(int(change));
        Rig r;
        Bytes recording = frames(3);
        if (change == Change::Stop) recording.insert(recording.end(), half.begin(), half.end());
        r.recording(recording);
        if (change == Change::Stop) {
            r.link.StartLogIn->click();
            r.link.FileInputTimer_Timer(); // 3 frames and a half: the end, and playback stops
            ASSERT_FALSE(r.link.PlaybackActive);
        } else {
            r.port.deliver(half);
        }
        if (change == Change::SelectPort) r.link.CommsPortob[1]->click();
        if (change == Change::Start) {
            r.link.StartLogIn->click();
            r.link.FileInputTimer_Timer();
        } else {
            r.port.deliver(frame);
        }
        EXPECT_EQ(r.sink.cyclic, change == Change::SelectPort ? 1 : 3 + (change == Change::Stop));
    }
}

// A message whose handler faulted leaves the receiver's guard held until the watchdog's
// tick: playback stops feeding it and waits, its timer off, then plays on from the next
// byte. Nothing after the faulted message is lost.
TEST(PlaybackWindow, PlaybackWaitsForTheWatchdogToFreeAHeldReceiver)
{
    for (int rate : {0, 2}) {
        SCOPED_TRACE(rate);
        Rig r;
        r.recording(frames(10));
        r.link.Rateob[static_cast<std::size_t>(rate)]->click();
        r.sink.onCyclic = [&] {
            if (r.sink.cyclic == 2) raiseSubscript();
        };
        r.link.StartLogIn->click();
        r.link.FileInputTimer_Timer();
        EXPECT_EQ(r.played(), 98);
        EXPECT_TRUE(r.link.receiver().ProcessingMsg);
        EXPECT_FALSE(r.link.FileInputTimer->isActive()) << "no polling while it waits";
        r.link.FileInputTimer_Timer(); // a late tick already queued changes nothing
        EXPECT_EQ(r.played(), 98);
        r.link.CommsTimeout_Timer();
        EXPECT_TRUE(r.link.FileInputTimer->isActive());
        for (int i = 0; i < 3 && r.link.PlaybackActive; ++i) r.link.FileInputTimer_Timer();
        EXPECT_FALSE(r.link.PlaybackActive);
        EXPECT_EQ(r.played(), 490);
        EXPECT_EQ(r.sink.cyclic, 10);
    }
}
