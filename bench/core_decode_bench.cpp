// The decode path of `kdxctl decode` and of a running log: receiver, cyclic decoder and
// log-line builder over a synthetic recording (random field values, about 1% noise
// bytes between frames). A live module sends 100 messages a second; a recording is
// decoded as fast as this goes.
#include "link/frame.h"
#include "link/message_ids.h"
#include "link/receiver.h"
#include "telemetry/cyclic_telemetry.h"
#include "telemetry/log_line.h"
#include "telemetry/telemetry_log_stream.h"

#include <benchmark/benchmark.h>

#include <random>
#include <vector>

namespace {

constexpr std::size_t kFrames = 50000;

std::vector<uint8_t> makeRecording(bool relayed)
{
    std::mt19937 rng(11);
    std::vector<uint8_t> out;
    std::vector<uint8_t> payload(relayed ? 22 : 45);
    for (std::size_t f = 0; f < kFrames; ++f) {
        for (auto& b : payload) b = static_cast<uint8_t>(rng());
        if (relayed) payload[0] = static_cast<uint8_t>(f % 3); // the reported axis
        const auto frame = kdx::buildFrame(relayed ? kdx::msg::CyclicQVane : kdx::msg::Cyclic, payload);
        out.insert(out.end(), frame.begin(), frame.end());
        if (f % 2 == 0) out.push_back(static_cast<uint8_t>(rng() % 0x5A));
    }
    return out;
}

// Bytes in, log text out, written away in 1 MB blocks as the command does.
void decodeRecording(benchmark::State& state, bool relayed)
{
    const auto recording = makeRecording(relayed);
    kdx::TelemetryLogStream log;
    log.text().reserve((1 << 20) + 4096);
    kdx::Receiver rx(&log);
    std::size_t textBytes = 0;
    constexpr std::size_t kBlock = 1 << 20;
    for (auto _ : state) {
        for (std::size_t at = 0; at < recording.size(); at += kBlock) {
            const std::size_t n = std::min(kBlock, recording.size() - at);
            rx.receiveBytes(std::span<const uint8_t>(recording.data() + at, n));
            if (log.text().size() >= kBlock) {
                textBytes += log.text().size();
                benchmark::DoNotOptimize(log.text().data());
                log.text().clear();
            }
        }
    }
    benchmark::DoNotOptimize(textBytes);
    state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(recording.size()));
    state.counters["messages/s"] =
        benchmark::Counter(static_cast<double>(state.iterations()) * kFrames, benchmark::Counter::kIsRate);
    state.counters["lines"] = static_cast<double>(log.lines());
}

void BM_DecodeRecordingDirect(benchmark::State& state) { decodeRecording(state, false); }
BENCHMARK(BM_DecodeRecordingDirect)->Unit(benchmark::kMillisecond);

void BM_DecodeRecordingRelayed(benchmark::State& state) { decodeRecording(state, true); }
BENCHMARK(BM_DecodeRecordingRelayed)->Unit(benchmark::kMillisecond);

// The parts alone, per message: the decoder, then the line builder.
kdx::InBuffer randomDirectMessage()
{
    std::mt19937 rng(5);
    kdx::InBuffer buf{};
    buf[0] = 48;
    buf[1] = kdx::msg::Cyclic;
    for (int i = 2; i < 48; ++i) buf[static_cast<std::size_t>(i)] = static_cast<int16_t>(rng() & 255);
    return buf;
}

void BM_DecodeDirectMessage(benchmark::State& state)
{
    const kdx::InBuffer buf = randomDirectMessage();
    const kdx::MsgView view(buf, 48);
    for (auto _ : state) {
        kdx::CyclicTelemetry t = kdx::decodeCyclicMsg(view);
        benchmark::DoNotOptimize(t);
    }
    state.counters["messages/s"] =
        benchmark::Counter(static_cast<double>(state.iterations()), benchmark::Counter::kIsRate);
}
BENCHMARK(BM_DecodeDirectMessage);

void BM_DirectLogLine(benchmark::State& state)
{
    const kdx::InBuffer buf = randomDirectMessage();
    const kdx::CyclicTelemetry t = kdx::decodeCyclicMsg(kdx::MsgView(buf, 48));
    std::string line;
    line.reserve(256);
    for (auto _ : state) {
        line.clear();
        kdx::appendTelemetryLogLine(line, t);
        benchmark::DoNotOptimize(line.data());
    }
    state.counters["lines/s"] =
        benchmark::Counter(static_cast<double>(state.iterations()), benchmark::Counter::kIsRate);
}
BENCHMARK(BM_DirectLogLine);

} // namespace
