// Configuration files (".kdx", ".bls") through the loader, as the main window loads one:
// the file is read from disk by the loader's own file-reading code, checked, copied into
// the memory image (either motor block when the file asks), turned into the parameter
// set and shown as the parameter labels and the table kdxctl prints. The first input
// byte chooses the target mode, the answer to the two-motor question and what the path
// names (mostly the file; now and then nothing, or a folder, whose read fails); the rest
// is the file.
//
// Checked: reading from disk gives what the bytes give; a path that cannot be read
// fails with the loader's message and changes nothing; a file that loads holds bytes
// only (0 .. 255), exactly 16 per data record, and a record kdxctl would refuse is one
// whose characters are not all hexadecimal digits; saved again from the image it
// filled, a file loads back to the same values.
#include "config/config_file.h"
#include "config/driver_config.h"
#include "config/param_label.h"
#include "config/param_table.h"
#include "core/host_error.h"
#include "fuzz_support.h"

#include <cctype>
#include <span>
#include <sys/stat.h>

namespace {

using namespace kdx;

[[noreturn]] void fail(const char* what) { fuzz::fail("config", what); }

enum class PathKind { File, Missing, Folder };

PathKind pathKind(uint8_t b)
{
    switch ((b >> 2) & 7) {
    case 6: return PathKind::Missing;
    case 7: return PathKind::Folder;
    default: return PathKind::File;
    }
}

// Whether every data record of a well-formed file holds hexadecimal digits only.
bool allHexDigits(std::span<const uint8_t> file)
{
    for (std::size_t off = 0; off + configfile::RecordChars <= file.size(); off += configfile::RecordBytes) {
        if (file[off + 1] == '!') continue;
        for (std::size_t i = 1; i + 1 < configfile::RecordChars; ++i)
            if (!std::isxdigit(file[off + i])) return false;
    }
    return true;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size)
{
    if (size == 0) return 0;
    const bool qvane = data[0] & 1;
    const bool secondMotor = data[0] & 2;
    const std::span<const uint8_t> file(data + 1, size - 1);

    const std::string folder = fuzz::scratchDir() + "/folder.kdx";
    std::string path;
    switch (pathKind(data[0])) {
    case PathKind::File: path = fuzz::writeScratchFile("input.kdx", file); break;
    case PathKind::Missing: path = fuzz::scratchDir() + "/missing.kdx"; break;
    case PathKind::Folder:
        ::mkdir(folder.c_str(), 0700);
        path = folder;
        break;
    }
    const ConfigLoad load = loadConfigFile(path, qvane);
    if (pathKind(data[0]) != PathKind::File) {
        const bool missing = pathKind(data[0]) == PathKind::Missing;
        if (load.status != ConfigLoadStatus::Failed || load.box.title != "File Read" ||
            load.error != (missing ? ConfigLoadError::Open : ConfigLoadError::Read) ||
            load.box.prompt.rfind(missing ? "Error opening config file: " : "Error reading file: ", 0) != 0)
            fail("a path that cannot be read did not fail with the loader's message");
        MemoryImage image{};
        image[0] = 77;
        if (applyConfigLoad(load, image) || image[0] != 77) fail("a failed load changed the image");
        return 0;
    }
    const ConfigLoad fromBytes = parseConfigFile(file, qvane);
    if (load.status != fromBytes.status || load.values != fromBytes.values || load.box.prompt != fromBytes.box.prompt ||
        load.firstNonHexLine != fromBytes.firstNonHexLine)
        fail("the file read from disk loads differently from its bytes");

    DriverConfig config;
    if (!applyConfigLoad(load, config.image(), secondMotor)) {
        if (load.status != ConfigLoadStatus::Failed) fail("an accepted file could not be applied");
        if (load.box.prompt.empty()) fail("a refused file has no message");
        return 0;
    }
    if (load.dataRecords != configfile::TwoAxisRecords && load.dataRecords != configfile::SingleAxisRecords)
        fail("a file with the wrong number of records was accepted");
    if (load.values.size() != static_cast<std::size_t>(load.dataRecords * configfile::ValuesPerRecord))
        fail("the values do not fill the records");
    for (int16_t v : load.values)
        if (v < 0 || v > 255) fail("a value outside a byte was loaded");
    if ((load.firstNonHexLine == 0) != allHexDigits(file)) fail("kdxctl's check of the digits is wrong");
    const MemoryImage loaded = config.image();

    // What the window shows. A host error abandons the refresh, as the guard does.
    try {
        config.acceptNewImage();
        for (int m = 0; m < 2; ++m)
            for (ParamLabel l : kRefreshOrder) (void)config.caption(l, m);
        (void)paramTableText(paramTable(config, load.twoAxis()), load.twoAxis());
    } catch (const HostError&) {
    }

    // Saved from the image the file filled, the file loads back to the same values.
    if (!secondMotor || !load.twoAxis()) {
        const ConfigLoad again = parseConfigFile(configFileBytes(loaded, load.twoAxis()), false);
        if (again.status != ConfigLoadStatus::Loaded || again.values != load.values)
            fail("a loaded file does not survive a save and a load");
    }
    return 0;
}
