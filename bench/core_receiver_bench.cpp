// The receiver with dispatch, fed direct cyclic frames (48-byte messages) with 1% noise
// bytes between them. The line itself carries 11.5 kB/s.
#include "link/frame.h"
#include "link/receiver.h"

#include <benchmark/benchmark.h>

#include <random>

namespace {

struct TouchingSink : kdx::MessageSink {
    long sum = 0;
    void PutCyclicMsg(const kdx::MsgView& m) override { sum += m[2] + m[46]; }
    void PutCyclicQvaneMsg(const kdx::MsgView& m) override { sum += m[2]; }
    void PutMemoryMsg(const kdx::MsgView&) override {}
    void PutAxisMemoryMsg(const kdx::MsgView&) override {}
    void PutMessageReceived(bool good) override { sum += good; }
};

std::vector<uint8_t> makeStream(std::size_t frames)
{
    std::mt19937 rng(7);
    std::vector<uint8_t> out;
    std::vector<uint8_t> payload(45);
    for (std::size_t f = 0; f < frames; ++f) {
        for (auto& b : payload) b = static_cast<uint8_t>(rng());
        const auto frame = kdx::buildFrame(121, payload);
        out.insert(out.end(), frame.begin(), frame.end());
        // 1% noise: about one byte in a hundred, between frames.
        if (f % 2 == 0) out.push_back(static_cast<uint8_t>(rng() % 0x5A));
    }
    return out;
}

void BM_ReceiverDirectCyclicWithNoise(benchmark::State& state)
{
    const auto stream = makeStream(20000);
    TouchingSink sink;
    kdx::Receiver rx(&sink);
    for (auto _ : state) {
        rx.receiveBytes(stream);
        benchmark::DoNotOptimize(sink.sum);
    }
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(stream.size()));
    state.counters["messages/s"] =
        benchmark::Counter(static_cast<double>(state.iterations()) * 20000.0, benchmark::Counter::kIsRate);
}
BENCHMARK(BM_ReceiverDirectCyclicWithNoise);

} // namespace
