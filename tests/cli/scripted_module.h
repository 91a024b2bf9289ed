#pragma once
// A small module on the far side of a real pseudo-terminal: cyclic telemetry every
// 10 ms, and memory reads and writes answered as a KDX (direct) or a Q-Vane relaying
// three KDX axes would, with switches for the faults a user meets.
#include "link/frame.h"

#include <array>
#include <atomic>
#include <chrono>
#include <mutex>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <poll.h>
#include <stdlib.h>
#include <termios.h>
#include <unistd.h>

namespace kdx::test {

struct ModuleOptions {
    bool qvane = false;
    bool telemetry = true;
    bool answerReads = true;
    bool storeWrites = true;
    bool answerWrites = false; // some firmware answers a write with its memory
    int shortReplies = 0;      // this many read replies come 20 bytes short first
    bool hangUpOnRead = false; // a read request closes the line instead (a cable pulled)
};

class ScriptedModule {
public:
    explicit ScriptedModule(ModuleOptions o) : opt_(o)
    {
        master_ = ::posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK);
        if (master_ < 0 || ::grantpt(master_) != 0 || ::unlockpt(master_) != 0) throw std::runtime_error("no pty");
        path_ = ::ptsname(master_);
        // Held open and raw for the whole test: the tool's open and close never hang up
        // the line, and nothing is echoed or line-buffered before the tool sets it up.
        slave_ = ::open(path_.c_str(), O_RDWR | O_NOCTTY);
        termios tio{};
        ::tcgetattr(slave_, &tio);
        ::cfmakeraw(&tio);
        ::tcsetattr(slave_, TCSANOW, &tio);
        thread_ = std::thread([this] { run(); });
    }
    ~ScriptedModule()
    {
        stop_ = true;
        thread_.join();
        ::close(slave_);
        if (master_ >= 0) ::close(master_);
    }

    const std::string& path() const { return path_; }
    int size() const { return opt_.qvane ? 30 : 60; }
    // Direct: the 60 configuration bytes; relayed: axis a's 30.
    void setMemory(const std::vector<uint8_t>& bytes, int axis = 0)
    {
        std::lock_guard<std::mutex> lock(mutex_);
        std::copy(bytes.begin(), bytes.end(), memory_[static_cast<std::size_t>(axis)].begin());
    }
    std::vector<uint8_t> memory(int axis = 0) const
    {
        std::lock_guard<std::mutex> lock(mutex_);
        const auto& m = memory_[static_cast<std::size_t>(axis)];
        return std::vector<uint8_t>(m.begin(), m.begin() + size());
    }
    // Every message received: count, identifier, payload (checksum dropped).
    std::vector<std::vector<uint8_t>> received() const
    {
        std::lock_guard<std::mutex> lock(mutex_);
        return received_;
    }

private:
    void send(int id, const std::vector<uint8_t>& payload)
    {
        const auto frame = buildFrame(id, payload);
        [[maybe_unused]] ssize_t n = ::write(master_, frame.data(), frame.size()); // dropped when full
    }

    void replyMemory(int axis)
    {
        std::vector<uint8_t> payload = memory(axis);
        if (opt_.qvane) payload.insert(payload.end(), {4, 1}); // firmware version
        if (shortSent_ < opt_.shortReplies && ++shortSent_) payload.resize(payload.size() - 20);
        send(opt_.qvane ? 136 + axis : 120, payload);
    }

    void store(const std::vector<uint8_t>& m, std::size_t from, int axis)
    {
        if (opt_.storeWrites) setMemory(std::vector<uint8_t>(m.begin() + from, m.begin() + from + size()), axis);
        if (opt_.answerWrites) replyMemory(axis);
    }

    void handle(const std::vector<uint8_t>& m)
    {
        {
            std::lock_guard<std::mutex> lock(mutex_);
            received_.emplace_back(m.begin(), m.end() - 1);
        }
        const int id = m[1], inner = m.size() > 3 ? m[2] : -1;
        if (opt_.hangUpOnRead && (id == 112 || (id == 130 && inner >= 128 && inner <= 130))) {
            ::close(master_);
            master_ = -1;
            return;
        }
        if (!opt_.qvane && id == 112 && opt_.answerReads) replyMemory(0);
        if (!opt_.qvane && id == 113 && m.size() == 63) store(m, 2, 0);
        if (opt_.qvane && id == 130 && inner >= 128 && inner <= 130 && opt_.answerReads) replyMemory(inner - 128);
        if (opt_.qvane && id == 130 && inner >= 131 && inner <= 133 && m.size() == 34) store(m, 3, inner - 131);
    }

    void receive(uint8_t b)
    {
        if (!inSync_) {
            inSync_ = b == 0x5A;
            frame_.clear();
            return;
        }
        frame_.push_back(b);
        if (frame_[0] < 3 || frame_.size() < frame_[0]) {
            inSync_ = frame_[0] >= 3;
            return;
        }
        inSync_ = false;
        unsigned sum = 0;
        for (std::size_t i = 0; i + 1 < frame_.size(); ++i) sum += frame_[i];
        if ((sum & 0xFF) == frame_.back()) handle(frame_);
    }

    void run()
    {
        auto next = std::chrono::steady_clock::now();
        for (uint8_t counter = 0; !stop_ && master_ >= 0;) {
            if (opt_.telemetry && std::chrono::steady_clock::now() >= next) {
                send(opt_.qvane ? 122 : 121, std::vector<uint8_t>(24, counter++));
                next += std::chrono::milliseconds(10);
            }
            pollfd p{master_, POLLIN, 0};
            uint8_t buf[512];
            const ssize_t n = ::poll(&p, 1, 2) > 0 ? ::read(master_, buf, sizeof buf) : 0;
            for (ssize_t i = 0; i < n; ++i) receive(buf[i]);
        }
    }

    ModuleOptions opt_;
    int master_ = -1, slave_ = -1;
    std::string path_;
    std::thread thread_;
    std::atomic<bool> stop_{false};
    mutable std::mutex mutex_;
    std::array<std::array<uint8_t, 60>, 3> memory_{};
    std::vector<std::vector<uint8_t>> received_;
    int shortSent_ = 0;
    bool inSync_ = false;
    std::vector<uint8_t> frame_;
};

} // namespace kdx::test
