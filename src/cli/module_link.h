#pragma once
// kdxctl's side of modules on serial lines: one module's port opened, the kind of module
// on it learned from its telemetry, its Q-Vane axis selected, its configuration read or
// written and read back; and the same work run on many modules at once, one thread
// each, so that a silent or misbehaving module holds up nobody but itself.
#include "cli/option_parser.h"
#include "cli/posix_serial.h"
#include "config/memory_image.h"
#include "config/memory_session.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace kdx::cli {

class ModuleLink {
public:
    explicit ModuleLink(std::string port);
    ModuleLink(const ModuleLink&) = delete;
    ModuleLink& operator=(const ModuleLink&) = delete;

    // Opens the port and listens for telemetry. Through a Q-Vane, selects `axis` when one
    // is given; without one the relayed requests address Tilt. False with the reason
    // (also for an axis given to a KDX wired directly).
    bool connect(std::optional<int> axis, std::string& error);
    bool qvane() const { return session_->targetIsQVane(); }
    // "KDX", or "Q-Vane axis Tilt" and the like.
    std::string targetName() const;
    // Bytes a read or write moves: 60 direct, 30 relayed.
    int elements() const { return session_->transferredElements(); }

    // Reads the configuration into `image` (elements 0 .. 59, or 0 .. 29 relayed; the rest
    // zero) and sets its checksum element, as a saved configuration carries it.
    bool read(MemoryImage& image, std::string& error);
    // Writes `image` and reads it back; false unless the module then holds it. A
    // difference reads "PORT holds different data after the write: byte N is X, expected Y".
    bool writeAndVerify(const MemoryImage& image, std::string& error);
    // Whether a write message went out, so that the module may hold other data than before.
    bool wrote() const { return wrote_; }
    // The selected Q-Vane axis (0 Tilt when none was selected).
    int axis() const { return session_->axis(); }

    // The line itself, for commands that talk to a connected module beyond its memory.
    bool send(std::span<const uint8_t> bytes, std::string& error) { return serial_.write(bytes, error); }
    bool receive(std::vector<uint8_t>& out, int timeoutMs, std::string& error)
    {
        return serial_.read(out, timeoutMs, error);
    }

private:
    std::string port_;
    PosixSerial serial_;
    std::unique_ptr<MemorySession> session_;
    bool wrote_ = false;
};

// A module to work on: its port and the Q-Vane axis to select, if any.
struct ModuleJob {
    std::string port;
    std::optional<int> axis;
};

// The jobs of a command line: every --port in order, each with the --axis given once
// for all of them, or one --axis per --port in the same order. Nothing, with a usage
// error, for an unknown axis, a count of axes that fits neither, or a port named twice
// (unless samePortTwice: one after the other, two axes of one Q-Vane).
std::optional<std::vector<ModuleJob>> moduleJobs(const Arguments& args, std::string& usage, bool samePortTwice = false);

// Runs work(0) .. work(count - 1) at once, each on its own thread, and returns when all
// have ended. One job runs on the calling thread.
void onEveryModule(std::size_t count, const std::function<void(std::size_t)>& work);

// The folder backups go to. It is made before any module is touched, so that a folder
// that cannot be made stops the run first; one the run made and left empty (no module
// could be read) goes again at the end.
class BackupFolder {
public:
    // `dir` (made when missing), or with `dir` empty a new kdx-backup-YYYYMMDD-HHMMSS in
    // the current folder ("-2", "-3" ... appended when that name is taken). False with
    // the reason when it cannot be made.
    bool make(const std::string& dir, std::string& error);
    // The folder; empty when none was made, or it was made and removed again.
    const std::string& path() const { return path_; }
    // Removes the folder if this run made it and nothing was saved in it.
    void finish();

private:
    std::string path_;
    bool made_ = false;
};

// "kdx-backup-YYYYMMDD-HHMMSS" for the local time now.
std::string datedBackupName();

// A module's backup file name within a folder: the port with "/dev/" dropped and other
// slashes made "_", the axis for a Q-Vane, and the extension: "ttyUSB0.kdx",
// "pts_3-roll.bls".
std::string backupFileName(const std::string& port, bool qvane, int axis);

} // namespace kdx::cli
