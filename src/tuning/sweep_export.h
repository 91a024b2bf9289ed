#pragma once
// A sweep as text: its metrics named and rounded the one way the tuning window's panel,
// the exported CSV and `kdxctl analyse` all show them, and the CSV file itself.
//
//   # kdxtool sweep: P 100.00, I 20.00, IA 2.00, D 50.00, V1 15.00, V2 40.00, G 100.00;
//     samples 1001, err_rms 0.104, ... settle_s -          (one line)
//   time_s,rate,error
//   0.00,1.25,-0.0312
//   ...
// Time in seconds at 100 samples per second, rate in deg/s, error in deg. Samples are
// written in the shortest form that reads back as the same 32-bit float, so the file
// analyses to exactly the numbers of the sweep it came from. Lines end in CR LF.
#include "tuning/gain_set.h"
#include "tuning/sweep_metrics.h"

#include <array>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace kdx {

namespace sweep_export {
// The first line starts with this; it tells an export from the other files.
inline constexpr std::string_view Mark = "# kdxtool sweep:";
inline constexpr std::string_view Columns = "time_s,rate,error";
inline constexpr std::string_view CsvFilter = "Comma-separated values (*.csv)|*.csv|All Files (*.*)|*.*";
inline constexpr std::string_view PngFilter = "PNG pictures (*.png)|*.png|All Files (*.*)|*.*";
} // namespace sweep_export

// One metric as text; nothing when the sweep has no such value.
struct MetricField {
    const char* name;
    std::optional<std::string> (*text)(const SweepMetrics& m);
    bool yesNo = false; // "yes" or "no"
};
// samples, err_rms, err_peak, rate_rms, freq_hz, share, ringing, steps, overshoot_pct,
// rise_s, settle_s.
extern const std::array<MetricField, 11> kSweepMetricFields;

// `v` with a fixed number of decimals ("%.*f").
std::string fixedText(double v, int decimals);

// The CSV file of samples 0..N-1 (the shorter span sets N), the gains that made them and
// their metrics.
std::string sweepCsvText(std::span<const float> rate, std::span<const float> error, const GainSet& gains,
                         const SweepMetrics& metrics);

} // namespace kdx
