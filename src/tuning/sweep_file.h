#pragma once
// A sweep read back from the files the program writes, for analysis: a tuning file
// (".btf", the Tuning Display's Save), a sweep exported as CSV from its File menu, or a
// telemetry log (the Data Logging window's
// comma-separated lines, or kdxctl decode's). The kind is told by the first line, which
// each writer puts there to the letter, so a log keeps working whatever it is named.
//
// Unlike the Tuning Display's Load, which keeps its historical one-line offset, every
// sample line of the file is read, in order: the numbers are those of the file.
#include "tuning/gain_set.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <variant>
#include <vector>

namespace kdx {

enum class SweepSource {
    TuningFile,  // one motor's sweep and the gains that made it
    DirectLog,   // a KDX wired directly: two motors per line
    QVaneLog,    // through a Q-Vane: one motor per line
    SweepExport, // the Tuning Display's CSV export: one sweep, time, rate and error
};

struct SweepFile {
    SweepSource source = SweepSource::TuningFile;
    std::vector<float> rate, error; // deg/s, deg; one entry per sample line
    std::optional<GainSet> gains;   // a tuning file's first line
};

// Reads the rate and error of every sample line. `motor` (0 or 1) picks the columns of a
// direct log; the other kinds hold one motor, and motor 1 of a Q-Vane log is an error.
// Lines may end in CR LF or LF; empty lines are skipped. A line with the wrong number of
// fields or a field that is not a finite number fails the whole file, with a message
// that names the line: a damaged file must not pass for a measurement.
std::variant<SweepFile, std::string> readSweepFile(std::span<const uint8_t> bytes, int motor);

} // namespace kdx
