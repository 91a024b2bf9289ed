#include "link/playback.h"

#include "core/host_error.h"
#include "core/host_numeric.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <limits>

namespace kdx {

std::string KiloCaption(int64_t bytes)
{
    return std::to_string(static_cast<int64_t>(Int(static_cast<double>(bytes) / playback::KiloByte))) + "K";
}

double MessagePacer::allowance(int64_t nowNs)
{
    if (nowNs > last_) {
        tokens_ = std::min(burst_, tokens_ + static_cast<double>(nowNs - last_) * 1e-9 * rate_);
        last_ = nowNs;
    }
    return std::max(tokens_, 0.0);
}

// ---- RecordingReader ----------------------------------------------------------------

std::optional<std::string> RecordingReader::open(const std::string& path)
{
    close();
    errno = 0;
    file_ = std::fopen(path.c_str(), "rb");
    if (!file_) return std::string(std::strerror(errno ? errno : ENOENT));
    refill(); // a folder opens but cannot be read: that is found here, not mid-playback
    if (!error_.empty()) {
        std::string why = error_;
        close();
        return why;
    }
    return std::nullopt;
}

void RecordingReader::close()
{
    if (file_) std::fclose(file_);
    file_ = nullptr;
    pos_ = len_ = 0;
    atEnd_ = false;
    error_.clear();
}

void RecordingReader::refill()
{
    pos_ = 0;
    errno = 0;
    len_ = std::fread(buf_.data(), 1, buf_.size(), file_);
    if (len_ == 0) {
        if (std::ferror(file_)) error_ = std::strerror(errno ? errno : EIO);
        atEnd_ = true;
    }
}

std::size_t RecordingReader::read(std::span<uint8_t> out)
{
    std::size_t done = 0;
    while (file_ && !atEnd_ && done < out.size()) {
        const std::size_t n = std::min(out.size() - done, len_ - pos_);
        std::memcpy(out.data() + done, buf_.data() + pos_, n);
        pos_ += n;
        done += n;
        if (pos_ == len_) refill(); // the end is known as soon as the last byte is taken
    }
    return done;
}

// ---- Playback -----------------------------------------------------------------------

std::optional<std::string> Playback::open(const std::string& path)
{
    auto reader = std::make_unique<RecordingReader>();
    if (auto error = reader->open(path)) return error;
    close();
    reader_ = std::move(reader);
    PlaybackAtEnd = false;
    BytesPlayed = 0;
    return std::nullopt;
}

void Playback::close()
{
    ++generation_;
    reader_.reset();
    heldAt_ = heldEnd_ = 0;
}

int Playback::pass(const Feed& feed, const Kilobyte& kilobyte)
{
    using namespace playback;
    const uint64_t generation = generation_;
    int played = 0;
    while (played < BytesPerPass && !PlaybackPaused && !PlaybackAtEnd && isOpen()) {
        if (!held()) {
            if (BytesPlayed == std::numeric_limits<int32_t>::max()) raiseOverflow();
            // Runs end at each kilobyte, where the count is shown and a pause can come in.
            const int toKilobyte = KiloByte - BytesPlayed % KiloByte;
            const int want = static_cast<int>(std::min<int64_t>(
                {BytesPerPass - played, toKilobyte, int64_t{std::numeric_limits<int32_t>::max()} - BytesPlayed}));
            heldAt_ = 0;
            heldEnd_ = reader_->read(std::span<uint8_t>(chunk_.data(), static_cast<std::size_t>(want)));
            if (heldEnd_ == 0) {
                PlaybackAtEnd = reader_->atEnd();
                break;
            }
        }
        // A consumer may stop or restart the playback (through a dialog's event loop);
        // the pass then ends without touching the new state.
        const std::span<const uint8_t> offered(chunk_.data() + heldAt_, heldEnd_ - heldAt_);
        const std::size_t taken = feed(offered);
        if (generation_ != generation) break;
        heldAt_ += taken;
        BytesPlayed += static_cast<int32_t>(taken);
        played += static_cast<int>(taken);
        PlaybackAtEnd = !held() && reader_->atEnd();
        if (held()) break;
        if (BytesPlayed % KiloByte == 0) {
            kilobyte(BytesPlayed);
            if (generation_ != generation) break;
        }
    }
    return played;
}

Playback::Tick Playback::tick(const Feed& feed, const Kilobyte& kilobyte, const SliceSpent& sliceSpent)
{
    Tick t;
    const uint64_t generation = generation_;
    for (;;) {
        if (PlaybackAtEnd) {
            t.reachedEnd = true;
            return t;
        }
        t.bytes += pass(feed, kilobyte);
        if (generation_ != generation) return t; // stopped or restarted meanwhile
        if (PlaybackAtEnd) {
            t.reachedEnd = true;
            return t;
        }
        if (held()) {
            t.held = true;
            return t;
        }
        // While paused a pass reads nothing, so the tick has nothing more to do.
        if (!PlaybackMaxRate || PlaybackPaused || !isOpen()) return t;
        if (sliceSpent && sliceSpent()) {
            t.more = true;
            return t;
        }
    }
}

} // namespace kdx
