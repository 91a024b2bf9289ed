#pragma once
// What the fuzz targets share: stopping on a broken expectation, a scratch folder of the
// fuzzing process's own for the files a target reads and writes, and a graph canvas
// that checks every line it is asked to draw.
#include "tuning/graph_canvas.h"

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <span>
#include <string>

#include <unistd.h>

namespace kdx::fuzz {

// Names the target and the broken expectation, then stops the run (a crash libFuzzer
// keeps the input of).
[[noreturn]] inline void fail(const char* target, const char* what)
{
    std::fprintf(stderr, "%s_fuzz: %s\n", target, what);
    std::abort();
}

// A folder under TMPDIR that belongs to this process alone; removed when it ends.
inline const std::string& scratchDir()
{
    struct Folder {
        std::string path;
        Folder()
        {
            const char* dir = std::getenv("TMPDIR");
            path = std::string(dir && *dir ? dir : "/tmp") + "/kdx-fuzz-XXXXXX";
            if (!::mkdtemp(path.data())) fail("scratch", "cannot create a temporary folder");
        }
        ~Folder()
        {
            std::error_code ec;
            std::filesystem::remove_all(path, ec);
        }
    };
    static const Folder folder;
    return folder.path;
}

// Writes `bytes` to the file `name` in the scratch folder and returns its path.
inline std::string writeScratchFile(const std::string& name, std::span<const uint8_t> bytes)
{
    const std::string path = scratchDir() + "/" + name;
    std::FILE* f = std::fopen(path.c_str(), "wb");
    if (!f || std::fwrite(bytes.data(), 1, bytes.size(), f) != bytes.size() || std::fclose(f) != 0)
        fail("scratch", "cannot write a file in the scratch folder");
    return path;
}

// Reads a whole file; empty when it is missing.
inline std::string readScratchFile(const std::string& path)
{
    std::string text;
    if (std::FILE* f = std::fopen(path.c_str(), "rb")) {
        char buf[4096];
        for (std::size_t n; (n = std::fread(buf, 1, sizeof buf, f)) > 0;) text.append(buf, n);
        std::fclose(f);
    }
    return text;
}

// The tuning graph's canvas at a typical size; a line with a coordinate that is not a
// number is a fault (it would be drawn nowhere, or across the whole picture).
class CheckingCanvas : public GraphCanvas {
public:
    explicit CheckingCanvas(const char* target) : target_(target) {}
    double width() const override { return 1000; }
    double height() const override { return 500; }
    void clear(uint32_t) override {}
    void line(double x0, double y0, double x1, double y1, uint32_t, double pen) override
    {
        if (!std::isfinite(x0) || !std::isfinite(y0) || !std::isfinite(x1) || !std::isfinite(y1) || !std::isfinite(pen))
            fail(target_, "a line with a coordinate that is not a number");
    }
    void axisLabels(int, const AxisLabels&) override {}

private:
    const char* target_;
};

} // namespace kdx::fuzz
