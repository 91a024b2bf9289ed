#include "cli/module_link.h"

#include "cli/cli_args.h"
#include "config/config_file.h"
#include "core/host_numeric.h"

#include <algorithm>
#include <ctime>
#include <filesystem>
#include <system_error>
#include <thread>

namespace kdx::cli {

namespace {

constexpr int kListenMs = 1000; // telemetry arrives 100 times a second
constexpr int kReplyMs = 1000;
constexpr int kReadAttempts = 2;
// A module may answer the write itself before it has stored everything; one more
// read-back is taken before a difference counts.
constexpr int kVerifyReads = 2;

} // namespace

ModuleLink::ModuleLink(std::string port)
    : port_(std::move(port)),
      session_(std::make_unique<MemorySession>(
          ByteLinkIo{[this](std::span<const uint8_t> b, std::string& e) { return serial_.write(b, e); },
                     [this](std::vector<uint8_t>& o, int t, std::string& e) { return serial_.read(o, t, e); }},
          port_))
{
}

bool ModuleLink::connect(std::optional<int> axis, std::string& error)
{
    if (!serial_.open(port_, error) || !session_->detectTarget(kListenMs, error)) return false;
    if (!axis) return true;
    if (!qvane()) {
        error = "--axis needs a Q-Vane, but " + port_ + " is a KDX wired directly";
        return false;
    }
    session_->setAxis(*axis);
    return session_->sendAxisSelect(error);
}

std::string ModuleLink::targetName() const
{
    return qvane() ? "Q-Vane axis " + AxisName(session_->axis()) : std::string("KDX");
}

bool ModuleLink::read(MemoryImage& image, std::string& error)
{
    image = {};
    if (!session_->readMemory(image, kReplyMs, kReadAttempts, error)) return false;
    image[layout::ImageChecksum] = imageChecksum(image);
    return true;
}

bool ModuleLink::writeAndVerify(const MemoryImage& image, std::string& error)
{
    wrote_ = true;
    if (!session_->writeMemory(image, error)) return false;
    int firstDifference = -1;
    MemoryImage back{};
    for (int attempt = 0; attempt < kVerifyReads; ++attempt) {
        if (!session_->readMemory(back, kReplyMs, kReadAttempts, error)) {
            error += " after the write";
            return false;
        }
        firstDifference = -1;
        for (int i = 0; i < elements() && firstDifference < 0; ++i)
            if (lowByte(back[static_cast<std::size_t>(i)]) != lowByte(image[static_cast<std::size_t>(i)]))
                firstDifference = i;
        if (firstDifference < 0) return true;
    }
    const auto i = static_cast<std::size_t>(firstDifference);
    error = port_ + " holds different data after the write: byte " + std::to_string(firstDifference) + " is " +
            std::to_string(lowByte(back[i])) + ", expected " + std::to_string(lowByte(image[i]));
    return false;
}

std::optional<std::vector<ModuleJob>> moduleJobs(const Arguments& args, std::string& usage, bool samePortTwice)
{
    const auto& ports = args.values("--port");
    const auto& axisTexts = args.values("--axis");
    if (ports.empty() && !axisTexts.empty()) {
        usage = "--axis goes with --port";
        return std::nullopt;
    }
    if (axisTexts.size() > 1 && axisTexts.size() != ports.size()) {
        usage = "give --axis once for every port, or once per --port";
        return std::nullopt;
    }
    std::vector<ModuleJob> jobs;
    for (std::size_t i = 0; i < ports.size(); ++i) {
        if (!samePortTwice && std::find(ports.begin(), ports.begin() + static_cast<std::ptrdiff_t>(i), ports[i]) !=
                                  ports.begin() + static_cast<std::ptrdiff_t>(i)) {
            usage = "port " + ports[i] + " given twice";
            return std::nullopt;
        }
        ModuleJob job{ports[i], std::nullopt};
        if (!axisTexts.empty()) {
            const std::string& text = axisTexts.size() == 1 ? axisTexts[0] : axisTexts[i];
            if (!(job.axis = parseAxis(text))) {
                usage = "unknown axis '" + text + "' (tilt, roll or pan)";
                return std::nullopt;
            }
        }
        jobs.push_back(std::move(job));
    }
    return jobs;
}

void onEveryModule(std::size_t count, const std::function<void(std::size_t)>& work)
{
    if (count == 1) {
        work(0);
        return;
    }
    std::vector<std::thread> threads;
    threads.reserve(count);
    for (std::size_t i = 0; i < count; ++i) threads.emplace_back(work, i);
    for (auto& t : threads) t.join();
}

std::string datedBackupName()
{
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    localtime_r(&now, &local);
    char stamp[32];
    std::strftime(stamp, sizeof stamp, "%Y%m%d-%H%M%S", &local);
    return std::string("kdx-backup-") + stamp;
}

bool BackupFolder::make(const std::string& dir, std::string& error)
{
    namespace fs = std::filesystem;
    std::error_code ec;
    if (!dir.empty()) {
        made_ = fs::create_directories(dir, ec);
        if (!fs::is_directory(dir)) {
            error = "cannot make the backup folder " + dir + ": " + (ec ? ec.message() : "a file has that name");
            return false;
        }
        path_ = dir;
        return true;
    }
    const std::string base = datedBackupName();
    for (int n = 1; n < 100; ++n) {
        const std::string name = n == 1 ? base : base + "-" + std::to_string(n);
        if (fs::create_directory(name, ec)) {
            path_ = name;
            made_ = true;
            return true;
        }
        if (ec) {
            error = "cannot make the backup folder " + name + ": " + ec.message();
            return false;
        }
    }
    error = "cannot make a backup folder: " + base + " and 98 more names are taken";
    return false;
}

void BackupFolder::finish()
{
    std::error_code ec;
    if (made_ && std::filesystem::is_empty(path_, ec) && std::filesystem::remove(path_, ec)) path_.clear();
    made_ = false;
}

std::string backupFileName(const std::string& port, bool qvane, int axis)
{
    std::string name = port.rfind("/dev/", 0) == 0 ? port.substr(5) : port;
    while (!name.empty() && name.front() == '/') name.erase(0, 1);
    std::replace(name.begin(), name.end(), '/', '_');
    if (qvane) {
        std::string axisName = AxisName(axis);
        std::transform(axisName.begin(), axisName.end(), axisName.begin(),
                       [](unsigned char c) { return std::tolower(c); });
        name += "-" + axisName;
    }
    return name + (qvane ? ".bls" : ".kdx");
}

} // namespace kdx::cli
