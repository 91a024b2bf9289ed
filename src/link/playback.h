#pragma once
// Recorded-input playback without a screen: the recording read from its file, the
// passes of 256 bytes the playback timer makes, the byte count and the two marks.
// The Comms Link window owns one, drives it from its timer and shows its counters.
#include <array>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace kdx {

namespace playback {

constexpr int BytesPerPass = 256;
constexpr int32_t KiloByte = 1024;

// The four rate buttons: caption, timer interval and whether the tick plays on until the
// end (or until its time slice is spent) instead of making one pass.
struct Rate {
    std::string_view caption;
    int interval; // ms
    bool maxRate;
};
// " x2" keeps its leading blank; "x 0.5" plays a quarter as fast as "x1", and is meant to.
constexpr std::array<Rate, 4> Rates{{{"Max", 1, true}, {" x2", 32, false}, {"x1", 64, false}, {"x 0.5", 256, false}}};

} // namespace playback

// Paces the "Max" rate by messages: on average at most `perSecond` a second, and at
// most `burst` at once after a pause. A token bucket on the caller's clock.
class MessagePacer {
public:
    constexpr MessagePacer(double perSecond, double burst) : rate_(perSecond), burst_(burst) {}
    // Full again, from `nowNs` on (Start).
    void reset(int64_t nowNs)
    {
        tokens_ = burst_;
        last_ = nowNs;
    }
    // Messages that may go now (0 while in debt).
    double allowance(int64_t nowNs);
    // `messages` went; a pass may overshoot, which the next allowances repay.
    void spend(double messages) { tokens_ -= messages; }

private:
    double rate_, burst_;
    double tokens_ = 0;
    int64_t last_ = 0;
};

// A byte count as the window shows it: whole kilobytes (rounded down) and "K".
std::string KiloCaption(int64_t bytes);

// The recording, read in blocks. atEnd() turns true as soon as the last byte has been
// taken, as the end-of-file test after a read does.
class RecordingReader {
public:
    RecordingReader() = default;
    RecordingReader(const RecordingReader&) = delete;
    RecordingReader& operator=(const RecordingReader&) = delete;
    ~RecordingReader() { close(); }

    // Opens `path` for reading from its beginning. On failure returns the operating
    // system's reason and leaves the reader closed.
    std::optional<std::string> open(const std::string& path);
    void close();
    bool isOpen() const { return file_ != nullptr; }
    // Up to `out.size()` bytes; fewer only at the end of the file or on a read error.
    std::size_t read(std::span<uint8_t> out);
    bool atEnd() const { return atEnd_; }
    // The reason of a read error, empty while none happened.
    const std::string& error() const { return error_; }

private:
    void refill();

    std::FILE* file_ = nullptr;
    std::array<uint8_t, 1 << 16> buf_{};
    std::size_t pos_ = 0, len_ = 0;
    bool atEnd_ = false;
    std::string error_;
};

class Playback {
public:
    // Bytes to play, in file order; returns how many the receiver took. Fewer than
    // offered means it is held: the rest stays and is offered again by the next pass.
    // The span is valid during the call only.
    using Feed = std::function<std::size_t(std::span<const uint8_t>)>;
    // BytesPlayed has just reached a multiple of 1024.
    using Kilobyte = std::function<void(int32_t bytesPlayed)>;
    // Whether the tick's time slice at the maximum rate is used up.
    using SliceSpent = std::function<bool()>;

    // Start: opens the recording from its beginning, clears PlaybackAtEnd and BytesPlayed.
    // On failure nothing changes (a recording already playing plays on) and the reason
    // is returned.
    std::optional<std::string> open(const std::string& path);
    void close();
    bool isOpen() const { return reader_ != nullptr; }
    // A read error that ended playback, empty while none happened.
    std::string readError() const { return reader_ ? reader_->error() : std::string(); }

    // One pass: up to 256 bytes, none while paused. A pass ends early at the end of the
    // recording, on a read error, when the receiver is held, or when a callback paused,
    // stopped or restarted the playback. Returns the bytes played (taken by the feed).
    int pass(const Feed& feed, const Kilobyte& kilobyte);
    // The receiver refused bytes the last pass offered; they wait for the next pass.
    bool held() const { return heldAt_ < heldEnd_; }

    struct Tick {
        int bytes = 0;
        bool reachedEnd = false; // the last byte has been played: playback is to stop
        bool more = false;       // at the maximum rate, the slice ended before the recording
        bool held = false;       // the receiver is held: nothing more until it is free
    };
    // The timer tick: one pass, or at the maximum rate passes until the end, a pause, a
    // held receiver or the slice is spent. A BytesPlayed at the 32-bit limit raises the
    // overflow error.
    Tick tick(const Feed& feed, const Kilobyte& kilobyte, const SliceSpent& sliceSpent);

    // Mark Start / Mark End: the current position.
    void MarkStartNow() { MarkStart = BytesPlayed; }
    void MarkEndNow() { MarkEnd = BytesPlayed; }

    bool PlaybackPaused = false;
    bool PlaybackAtEnd = false;
    bool PlaybackMaxRate = false;
    int32_t BytesPlayed = 0;
    int32_t MarkStart = 0;
    int32_t MarkEnd = 0;

private:
    std::unique_ptr<RecordingReader> reader_;
    uint64_t generation_ = 0; // changes with every open and close
    // The bytes last read; those from heldAt_ on have not been taken yet.
    std::array<uint8_t, playback::BytesPerPass> chunk_{};
    std::size_t heldAt_ = 0, heldEnd_ = 0;
};

} // namespace kdx
