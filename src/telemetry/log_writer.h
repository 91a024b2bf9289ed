#pragma once
// The logging window's log file: Start, Pause, Stop and PutStringToLog, the line count
// it shows, and getting the lines onto the disk.
//
// Lines are buffered and written out when the oldest buffered line is FlushInterval old
// (checked on every line and by flushIfDue, which the window calls from a timer so a
// stalled telemetry stream still reaches the disk), on Pause and on Stop. A failed write
// (a full disk) stops logging, cuts the file back to the last whole line and is reported
// once; every line written before stays in the file.
#include "platform/clock.h"

#include <cstdint>
#include <cstdio>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kdx {

class LogWriter {
public:
    static constexpr double FlushInterval = 0.5;     // seconds
    static constexpr std::size_t FlushBytes = 65536; // write out sooner when this much waits

    static constexpr std::string_view OpenErrorPrefix = "Error opening log file: ";
    static constexpr std::string_view OpenErrorTitle = "File Open";
    static constexpr std::string_view WriteErrorPrefix = "Error writing log file: ";
    static constexpr std::string_view WriteErrorTitle = "File Write";

    // What PutStringToLog did.
    enum class PutResult {
        NotWritten,   // not logging, or paused: the line is dropped
        Written,      // the line is in the log; the count shown is unchanged
        CountChanged, // the line is in the log and LogEvents() has a new text to show
        WriteFailed,  // writing failed: logging has stopped (see writeError())
    };

    // `clock` times the flushes; it must outlive the writer.
    explicit LogWriter(Clock& clock = systemClock());
    ~LogWriter(); // an open log is written out and closed
    LogWriter(const LogWriter&) = delete;
    LogWriter& operator=(const LogWriter&) = delete;

    // StartLog_Click. When not logging: an existing regular file at `path` (UTF-8) is
    // deleted (a device or a pipe is opened as it is), the file is opened, LinesLogged
    // becomes 0 and `header` is written and flushed. On failure nothing is logging and
    // the result is the text of the box ("Error opening log file: " and the reason,
    // titled OpenErrorTitle). In every case Paused becomes false, so Start also resumes.
    std::optional<std::string> Start(const std::string& path, std::string_view header);

    // PauseLog_Click: lines are dropped until Start. Buffered lines are written out;
    // false when that failed (logging has then stopped; see writeError()).
    bool Pause();

    // StopLog_Click, when logging: writes out, closes, clears Logging and Paused (the
    // window then runs Next). False when the last write failed (see writeError()); the
    // file is closed either way. Does nothing when not logging.
    bool Stop();

    // Writes one prepared line (CR LF included) when logging and not paused.
    PutResult PutStringToLog(std::string_view line);

    // Writes out buffered lines when the oldest is FlushInterval old. False when that
    // failed (logging has then stopped; see writeError()).
    bool flushIfDue();

    bool GetLoggingDataToFile() const { return file_ != nullptr; }
    bool paused() const { return paused_; }
    int32_t LinesLogged() const { return linesLogged_; }
    // The text of the LogEvents label: the count as of Start or the last tenth line,
    // with the leading blank of a positive number (" 0", " 10").
    const std::string& LogEvents() const { return logEvents_; }
    // The box text of the last write failure: "Error writing log file: " and the
    // reason. Titled WriteErrorTitle.
    const std::string& writeError() const { return writeError_; }

private:
    bool flush();
    void fail(const std::string& reason);

    Clock& clock_;
    std::FILE* file_ = nullptr;
    std::string path_;
    bool regularFile_ = false;
    bool paused_ = false;
    int32_t linesLogged_ = 0;
    std::string logEvents_ = " 0";
    std::string writeError_;
    std::string failReason_;

    std::string pending_;               // lines not yet written
    std::vector<std::size_t> lineEnds_; // end offset of each line in pending_
    double pendingSince_ = 0;           // clock time of the oldest pending line
    uint64_t written_ = 0;              // bytes of whole lines in the file
};

} // namespace kdx
