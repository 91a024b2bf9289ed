// Configuration files (".kdx", ".bls") through the loader, as the main window loads one:
// the bytes are checked, copied into the memory image (either motor block when the file
// asks), turned into the parameter set and shown as the parameter labels and the table
// kdxctl prints. The first input byte chooses the target mode and the answer to the
// two-motor question; the rest is the file.
//
// Checked: a file that loads holds bytes only (0 .. 255), exactly 16 per data record;
// saved again from the image it filled, it loads back to the same values.
#include "config/config_file.h"
#include "config/driver_config.h"
#include "config/param_label.h"
#include "config/param_table.h"
#include "core/host_error.h"

#include <cstdio>
#include <cstdlib>
#include <span>

namespace {

using namespace kdx;

[[noreturn]] void fail(const char* what)
{
    std::fprintf(stderr, "config_fuzz: %s\n", what);
    std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size)
{
    if (size == 0) return 0;
    const bool qvane = data[0] & 1;
    const bool secondMotor = data[0] & 2;
    const std::span<const uint8_t> file(data + 1, size - 1);

    const ConfigLoad load = parseConfigFile(file, qvane);
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
