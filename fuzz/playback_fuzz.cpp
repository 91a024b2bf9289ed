// Recorded input on arbitrary files: the playback read from disk in its passes of 256
// bytes at every rate, paused, resumed, marked and restarted as the user does it, with
// every byte fed to the receiver and its decoders; then "Write File" (trim) between the
// marks taken.
//
// The input is a script of playback steps followed by the recording itself: its first
// two bytes say how long the script is.
//
// Checked: playback hands over exactly the file's bytes, in order, once each, whatever
// the rate, pauses and restarts; it reaches the end exactly when every byte has been
// played, and its count and kilobyte caption match; the kilobyte callback comes at each
// whole kilobyte; the trimmed copy holds exactly the bytes from one after the start mark
// to one after the end mark (at least two), or fails only when the recording is too
// short, keeping what it copied.
#include "fuzz_support.h"
#include "link/playback.h"
#include "link/receiver.h"
#include "link/trim.h"
#include "telemetry/telemetry_log_stream.h"

#include <fuzzer/FuzzedDataProvider.h>

#include <algorithm>
#include <span>
#include <vector>

namespace {

using namespace kdx;

[[noreturn]] void fail(const char* what) { fuzz::fail("playback", what); }

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size)
{
    if (size < 2) return 0;
    const std::size_t scriptLength = std::min<std::size_t>(size - 2, (data[0] << 8 | data[1]) % 512);
    FuzzedDataProvider script(data + 2, scriptLength);
    const std::span<const uint8_t> recording(data + 2 + scriptLength, size - 2 - scriptLength);
    const std::string path = fuzz::writeScratchFile("Run 0.Log", recording);

    TelemetryLogStream log;
    Receiver rx(&log);
    Playback playback;
    std::vector<uint8_t> played; // since the last Start
    auto feed = [&](std::span<const uint8_t> bytes) {
        const std::size_t taken = rx.receiveWhileFree(bytes);
        played.insert(played.end(), bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(taken));
        return taken;
    };
    auto kilobyte = [&](int32_t bytesPlayed) {
        if (bytesPlayed % playback::KiloByte != 0 || static_cast<std::size_t>(bytesPlayed) != played.size())
            fail("the kilobyte count came at the wrong place");
    };
    auto start = [&] {
        if (playback.open(path)) fail("the recording could not be opened");
        played.clear();
        rx.ResetSync();
    };
    start();
    int slices = 0;
    while (playback.isOpen()) {
        const int step = script.remaining_bytes() > 0 ? script.ConsumeIntegralInRange<int>(0, 7) : 0;
        switch (step) {
        case 1: playback.PlaybackPaused = !playback.PlaybackPaused; break;
        case 2: playback.PlaybackMaxRate = !playback.PlaybackMaxRate; break;
        case 3: playback.MarkStartNow(); break;
        case 4: playback.MarkEndNow(); break;
        case 5: start(); break; // Start again from the beginning
        default: {
            // With nothing left in the script the playback resumes and runs to the end.
            if (script.remaining_bytes() == 0) playback.PlaybackPaused = false;
            slices = script.remaining_bytes() > 0 ? script.ConsumeIntegralInRange<int>(0, 3) : 1000000;
            const Playback::Tick tick = playback.tick(feed, kilobyte, [&] { return slices-- <= 0; });
            if (tick.held) rx.CommsTimeout_Timer(); // the watchdog frees a held receiver
            if (tick.reachedEnd) {
                if (played.size() != recording.size()) fail("the end came before every byte was played");
                playback.close();
            }
            break;
        }
        }
        if (played.size() > recording.size() || !std::equal(played.begin(), played.end(), recording.begin()))
            fail("playback handed over other bytes than the recording's, or not in order");
        if (static_cast<std::size_t>(playback.BytesPlayed) != played.size()) fail("the byte count is wrong");
        if (KiloCaption(playback.BytesPlayed) != std::to_string(played.size() / 1024) + "K")
            fail("the kilobyte caption is wrong");
    }

    // Write File with the marks taken.
    const int32_t markStart = playback.MarkStart, markEnd = playback.MarkEnd;
    const TrimResult r = trimRecording(path, markStart, markEnd);
    const std::size_t from = static_cast<std::size_t>(markStart) + 1;
    const std::size_t count = static_cast<std::size_t>(std::max(markEnd - markStart, 1)) + 1;
    const bool fits = from + count <= recording.size();
    if (r.ok != fits) fail("the trim failed although the recording holds the marked stretch, or the reverse");
    const std::string text = fuzz::readScratchFile(r.output);
    const std::vector<uint8_t> copy(text.begin(), text.end());
    const std::size_t kept = from < recording.size() ? std::min(count, recording.size() - from) : 0;
    if (copy.size() != kept || static_cast<std::size_t>(r.copied) != kept ||
        !std::equal(copy.begin(), copy.end(),
                    recording.begin() + static_cast<std::ptrdiff_t>(std::min(from, recording.size()))))
        fail("the trimmed copy holds other bytes than the marked stretch");
    return 0;
}
