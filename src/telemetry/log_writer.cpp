#include "telemetry/log_writer.h"

#include "core/host_numeric.h"

#include <cerrno>
#include <filesystem>
#include <system_error>

namespace kdx {

namespace fs = std::filesystem;

namespace {

fs::path fromUtf8(const std::string& s) { return fs::path(std::u8string(s.begin(), s.end())); }

std::FILE* openForWriting(const fs::path& p)
{
#ifdef _WIN32
    return _wfopen(p.c_str(), L"wb");
#else
    return std::fopen(p.c_str(), "wb");
#endif
}

std::string reason(int err) { return std::generic_category().message(err); }

} // namespace

LogWriter::LogWriter(Clock& clock) : clock_(clock) {}

LogWriter::~LogWriter()
{
    if (file_) {
        flush();
        if (file_) std::fclose(file_);
    }
}

std::optional<std::string> LogWriter::Start(const std::string& path, std::string_view header)
{
    paused_ = false;
    if (file_) return std::nullopt;

    const fs::path p = fromUtf8(path);
    std::error_code ec;
    const fs::file_status st = fs::status(p, ec);
    regularFile_ = fs::is_regular_file(st);
    // Replace an old log; never delete a device or a pipe someone pointed us at.
    if (regularFile_ && !fs::remove(p, ec) && ec) return std::string(OpenErrorPrefix) + ec.message();
    if (!fs::exists(st)) regularFile_ = true; // fopen creates a regular file

    errno = 0;
    std::FILE* f = openForWriting(p);
    if (!f) return std::string(OpenErrorPrefix) + reason(errno ? errno : ENOENT);
    // Unbuffered: this class does the buffering, and a failed write must show at fwrite.
    std::setvbuf(f, nullptr, _IONBF, 0);
    file_ = f;
    path_ = path;
    pending_.clear();
    lineEnds_.clear();
    written_ = 0;
    linesLogged_ = 0;
    logEvents_ = Str(0);

    pending_.append(header);
    lineEnds_.push_back(pending_.size());
    pendingSince_ = clock_.nowSeconds();
    if (!flush()) {
        // The header could not be written: the log does not start.
        writeError_.clear();
        return std::string(OpenErrorPrefix) + failReason_;
    }
    return std::nullopt;
}

bool LogWriter::Pause()
{
    paused_ = true;
    return file_ ? flush() : true;
}

bool LogWriter::Stop()
{
    if (!file_) return true;
    bool ok = flush(); // a failed flush has closed the file already
    if (file_) {
        if (std::fclose(file_) != 0 && ok) {
            ok = false;
            writeError_ = std::string(WriteErrorPrefix) + reason(errno);
        }
        file_ = nullptr;
    }
    paused_ = false;
    return ok;
}

LogWriter::PutResult LogWriter::PutStringToLog(std::string_view line)
{
    if (!file_ || paused_) return PutResult::NotWritten;
    const double now = clock_.nowSeconds();
    if (pending_.empty()) pendingSince_ = now;
    pending_.append(line);
    lineEnds_.push_back(pending_.size());
    if ((now - pendingSince_ >= FlushInterval || pending_.size() >= FlushBytes) && !flush())
        return PutResult::WriteFailed;
    linesLogged_ = checked32(static_cast<long long>(linesLogged_) + 1);
    if (linesLogged_ % 10 != 0) return PutResult::Written;
    logEvents_ = Str(linesLogged_);
    return PutResult::CountChanged;
}

bool LogWriter::flushIfDue()
{
    if (!file_ || pending_.empty() || clock_.nowSeconds() - pendingSince_ < FlushInterval) return true;
    return flush();
}

bool LogWriter::flush()
{
    if (pending_.empty()) return true;
    errno = 0;
    const std::size_t n = std::fwrite(pending_.data(), 1, pending_.size(), file_);
    if (n == pending_.size()) {
        written_ += n;
        pending_.clear();
        lineEnds_.clear();
        return true;
    }
    // Keep the whole lines that made it; the torn one is cut off in fail().
    std::size_t whole = 0;
    for (std::size_t end : lineEnds_) {
        if (end > n) break;
        whole = end;
    }
    written_ += whole;
    fail(reason(errno ? errno : ENOSPC));
    return false;
}

void LogWriter::fail(const std::string& why)
{
    std::fclose(file_);
    file_ = nullptr;
    paused_ = false;
    pending_.clear();
    lineEnds_.clear();
    if (regularFile_) {
        std::error_code ec;
        fs::resize_file(fromUtf8(path_), written_, ec); // best effort: a torn last line goes
    }
    failReason_ = why;
    writeError_ = std::string(WriteErrorPrefix) + why;
}

} // namespace kdx
