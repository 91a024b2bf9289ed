// Noise at ten times the module's byte rate on a real pseudo-terminal, after a second
// and a half of normal telemetry, through the program on the Qt serial port (Comms Link,
// main window, Tuning Display). The far end is paced on the wall clock by a thread.
// Reported: the longest wait of a 10 ms timer during the flood (ms), the heap's growth
// over the flood (KB), and the bytes of noise the program took per second.
#include "fakes/qt_port_program.h"
#include "sim/simulator.h"

#include <QElapsedTimer>
#include <QTimer>
#include <benchmark/benchmark.h>

#include <atomic>
#include <chrono>
#include <random>
#include <thread>

#include <fcntl.h>
#include <unistd.h>

#if defined(__SANITIZE_ADDRESS__)
#define KDX_BENCH_ASAN 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define KDX_BENCH_ASAN 1
#endif
#endif
#ifdef KDX_BENCH_ASAN
#include <sanitizer/allocator_interface.h>
#else
#include <malloc.h>
#endif

namespace {

using namespace kdx;

// Bytes the heap holds for the program right now.
std::size_t heapInUse()
{
#ifdef KDX_BENCH_ASAN
    return __sanitizer_get_current_allocated_bytes();
#else
    const struct mallinfo2 m = mallinfo2();
    return m.uordblks + m.hblkhd;
#endif
}

void BM_NoiseFloodAtTenTimesTheByteRate(benchmark::State& state)
{
    constexpr int kSeconds = 10;
    constexpr int kSliceMs = 10;
    // The normal byte rate: what the simulated module sends in a second.
    std::size_t normalRate = 0;
    {
        sim::Simulator module({.qvane = false, .seed = 1});
        std::vector<uint8_t> second;
        module.advance(1.0, second);
        normalRate = second.size();
    }
    const std::size_t floodRate = 10 * normalRate;

    for (auto _ : state) {
        const int master = posix_openpt(O_RDWR | O_NOCTTY);
        if (master < 0 || grantpt(master) != 0 || unlockpt(master) != 0) {
            state.SkipWithError("no pseudo-terminal");
            return;
        }
        test::QtPortProgram p(ptsname(master));
        if (!p.comms.PortOpen) {
            state.SkipWithError("the pseudo-terminal did not open");
            ::close(master);
            return;
        }
        p.dialogs.failOnUnexpected = false; // counted below
        std::atomic<std::size_t> received{0};
        auto deliver = p.port.onBytes;
        p.port.onBytes = [&](std::span<const uint8_t> b) {
            received += b.size();
            deliver(b);
        };

        // The module streams for a second and a half (the program shows its windows and
        // reads the configuration), then the line carries nothing but noise. What the
        // program sends is read and dropped.
        enum Phase { Module, Noise, Done };
        std::atomic<int> phase{Module};
        std::atomic<std::size_t> sentAtFlood{0}, sent{0};
        std::thread far([&] {
            ::fcntl(master, F_SETFL, ::fcntl(master, F_GETFL) | O_NONBLOCK);
            auto writeAll = [&](const std::vector<uint8_t>& bytes) {
                std::size_t at = 0;
                while (at < bytes.size()) {
                    const ssize_t n = ::write(master, bytes.data() + at, bytes.size() - at);
                    if (n > 0) at += static_cast<std::size_t>(n);
                    else std::this_thread::sleep_for(std::chrono::milliseconds(1)); // the line is full
                }
                sent += bytes.size();
            };
            sim::Simulator module({.qvane = false, .seed = 1});
            std::mt19937 random(1234);
            std::vector<uint8_t> out, in(4096);
            const auto start = std::chrono::steady_clock::now();
            for (int i = 1; i <= (1500 + kSeconds * 1000) / kSliceMs; ++i) {
                ssize_t n;
                while ((n = ::read(master, in.data(), in.size())) > 0)
                    if (phase == Module)
                        module.consume(std::span<const uint8_t>(in.data(), static_cast<std::size_t>(n)));
                if (i == 1500 / kSliceMs + 1) {
                    sentAtFlood = sent.load();
                    phase = Noise;
                }
                out.clear();
                if (phase == Module) {
                    module.advance(kSliceMs / 1000.0, out);
                } else {
                    out.resize(floodRate * kSliceMs / 1000);
                    for (auto& b : out) b = static_cast<uint8_t>(random());
                }
                writeAll(out);
                std::this_thread::sleep_until(start + std::chrono::milliseconds(i * kSliceMs));
            }
            phase = Done;
        });

        QElapsedTimer clock;
        clock.start();
        qint64 last = 0, longestWait = 0;
        QTimer beat;
        QObject::connect(&beat, &QTimer::timeout, [&] {
            const qint64 t = clock.elapsed();
            if (phase == Noise) longestWait = std::max(longestWait, t - last);
            last = t;
        });
        beat.start(10);
        test::pumpEvents(3000, [&] { return phase != Module; });
        const bool configured = p.main.GetGainsHaveBeenLoaded();
        const std::size_t heapAtFlood = heapInUse();
        const qint64 floodStart = clock.elapsed();
        test::pumpEvents((kSeconds + 5) * 1000, [&] { return phase == Done && received >= sent; });
        const double floodSeconds = static_cast<double>(clock.elapsed() - floodStart) / 1000;
        const std::size_t heapAtEnd = heapInUse();
        beat.stop();
        far.join();
        ::close(master);

        if (!configured || received != sent || !p.dialogs.boxes.empty())
            state.SkipWithError(("configured " + std::to_string(configured) + ", received " + std::to_string(received) +
                                 " of " + std::to_string(sent) + " bytes, boxes " +
                                 std::to_string(p.dialogs.boxes.size()))
                                    .c_str());
        state.SetIterationTime(floodSeconds);
        state.counters["longest_wait_ms"] = static_cast<double>(longestWait);
        state.counters["heap_growth_KB"] = (static_cast<double>(heapAtEnd) - static_cast<double>(heapAtFlood)) / 1024;
        state.counters["noise_B/s"] = static_cast<double>(sent - sentAtFlood) / floodSeconds;
    }
}
BENCHMARK(BM_NoiseFloodAtTenTimesTheByteRate)->UseManualTime()->Iterations(1)->Unit(benchmark::kSecond);

} // namespace
