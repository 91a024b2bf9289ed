// kdxctl write on many modules at once: eight simulated KDX modules, each on its own
// pseudo-terminal served in real time as `kdxctl sim --pty` serves it, written (with
// the backup read first) and verified in one run, against one module alone. Reported:
// ms for one module, ms for eight, and their ratio (eight_over_one; 1.0 would be fully
// parallel). Timed by the wall clock, so a busy machine shows as a larger ratio.
#include "cli/command.h"
#include "config/config_file.h"
#include "sim/pty_bridge.h"
#include "sim/simulator.h"

#include <benchmark/benchmark.h>

#include <atomic>
#include <chrono>
#include <filesystem>
#include <memory>
#include <sstream>
#include <thread>

namespace {

constexpr int kModules = 8;

// Simulated modules on pseudo-terminals, served until the farm goes.
class SimFarm {
public:
    explicit SimFarm(int count)
    {
        for (int i = 0; i < count; ++i) {
            auto bridge = std::make_unique<kdx::sim::PtyBridge>();
            std::string error;
            if (!bridge->open(error)) throw std::runtime_error(error);
            paths_.push_back(bridge->devicePath());
            threads_.emplace_back([this, b = bridge.get(), seed = i + 1] {
                kdx::sim::SimOptions options;
                options.seed = static_cast<uint64_t>(seed);
                kdx::sim::Simulator sim(options);
                std::string e;
                b->serve(
                    sim, [this] { return stop_.load(); }, e);
            });
            bridges_.push_back(std::move(bridge));
        }
    }
    ~SimFarm()
    {
        stop_ = true;
        for (auto& t : threads_) t.join();
    }
    const std::vector<std::string>& paths() const { return paths_; }

private:
    std::atomic<bool> stop_{false};
    std::vector<std::unique_ptr<kdx::sim::PtyBridge>> bridges_;
    std::vector<std::thread> threads_;
    std::vector<std::string> paths_;
};

// kdxctl write to the first n modules of the farm; its duration in ms, or -1 on failure.
double writeModules(const SimFarm& farm, int n, const std::string& file, const std::string& backups, std::string& error)
{
    std::vector<std::string> args{"write", "--backup-dir", backups, file};
    for (int i = 0; i < n; ++i) args.insert(args.end(), {"--port", farm.paths()[static_cast<std::size_t>(i)]});
    std::ostringstream out, err;
    kdx::cli::CommandIo io{out, err};
    const auto start = std::chrono::steady_clock::now();
    const int code = kdx::cli::runKdxctl(args, io);
    const std::chrono::duration<double, std::milli> took = std::chrono::steady_clock::now() - start;
    if (code != 0) {
        error = err.str();
        return -1;
    }
    return took.count();
}

void batchWrite(benchmark::State& state)
{
    namespace fs = std::filesystem;
    const fs::path dir = fs::temp_directory_path() / "kdx_batch_bench";
    fs::create_directories(dir);
    kdx::MemoryImage image{};
    for (int m = 0; m < 2; ++m) { // 20 kHz, 30 % static power, a 1:1 drive
        image[static_cast<std::size_t>(30 * m + 2)] = 208;
        image[static_cast<std::size_t>(30 * m + 3)] = 7;
        image[static_cast<std::size_t>(30 * m + 5)] = 30;
        image[static_cast<std::size_t>(30 * m + 22)] = 64;
    }
    const std::string file = (dir / "batch.kdx").string();
    kdx::saveConfigFile(file, image, true);

    SimFarm farm(kModules);
    double one = 0, eight = 0;
    std::string error;
    for (auto _ : state) {
        const double t1 = writeModules(farm, 1, file, (dir / "one").string(), error);
        const double t8 = writeModules(farm, kModules, file, (dir / "eight").string(), error);
        if (t1 < 0 || t8 < 0) {
            state.SkipWithError(error.c_str());
            break;
        }
        one += t1;
        eight += t8;
        state.SetIterationTime((t1 + t8) / 1000.0);
    }
    fs::remove_all(dir);
    const auto n = static_cast<double>(state.iterations());
    if (n == 0) return;
    state.counters["one_ms"] = one / n;
    state.counters["eight_ms"] = eight / n;
    state.counters["eight_over_one"] = eight / one;
}
BENCHMARK(batchWrite)->Unit(benchmark::kMillisecond)->UseManualTime()->Iterations(20);

} // namespace
