// kdxctl write and read on many modules at once, over real pseudo-terminals: every
// module is served, a silent or lying one spoils nothing for the others, and the
// backups undo the batch.
#include "cli/run_kdxctl.h"
#include "config/config_file.h"
#include "scripted_module.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>

using namespace kdx;
using namespace kdx::test;
namespace fs = std::filesystem;

namespace {

std::string data(const char* name) { return std::string(KDX_TEST_DATA) + "/" + name; }

// The first n bytes of a configuration file.
std::vector<uint8_t> bytesOf(const std::string& file, int n = 60)
{
    const ConfigLoad load = loadConfigFile(file, false);
    if (static_cast<int>(load.values.size()) < n) return {};
    return std::vector<uint8_t>(load.values.begin(), load.values.begin() + n);
}

// A port's backup file, named as the README says: /dev/pts/7 -> pts_7.kdx.
std::string backupOf(const fs::path& dir, const std::string& port)
{
    std::string name = port.substr(5);
    std::replace(name.begin(), name.end(), '/', '_');
    return (dir / (name + ".kdx")).string();
}

struct TempDir {
    fs::path path = fs::temp_directory_path() / ("kdx-batch-" + std::to_string(::getpid()));
    TempDir() { fs::create_directories(path); }
    ~TempDir() { fs::remove_all(path); }
};

} // namespace

TEST(KdxctlBatch, WritesEveryModuleAndKeepsWhatEachHeldBefore)
{
    // Four modules, each holding its own configuration: two that work, one that sends
    // nothing at all, one that keeps other bytes than it was sent.
    ScriptedModule good({}), silent({.telemetry = false}), lying({.storeWrites = false}), alsoGood({});
    ScriptedModule* modules[] = {&good, &silent, &lying, &alsoGood};
    for (int i = 0; i < 4; ++i) modules[i]->setMemory(std::vector<uint8_t>(60, static_cast<uint8_t>(0x10 + i)));
    TempDir dir;
    const fs::path undo = dir.path / "undo";
    const std::string file = data("config_sample.kdx");
    std::vector<std::string> args{"write", "--json", "--backup-dir", undo.string(), file};
    for (const auto* m : modules) args.insert(args.end(), {"--port", m->path()});

    const KdxctlResult r = kdxctl(args);
    EXPECT_EQ(r.code, 1);
    auto row = [&](const ScriptedModule& m, const std::string& target, const std::string& result,
                   const std::string& detail, bool backup) {
        return "{\"port\":\"" + m.path() + "\",\"target\":" + target + ",\"result\":\"" + result + "\",\"detail\":\"" +
               detail + "\",\"backup\":" + (backup ? "\"" + backupOf(undo, m.path()) + "\"" : "null") + "}";
    };
    const std::string written = "wrote 60 bytes and read them back";
    EXPECT_EQ(r.out,
              "{\"command\":\"write\",\"file\":\"" + file + "\",\"backupDir\":\"" + undo.string() +
                  "\",\"ok\":false,\"modules\":[" + row(good, "\"KDX\"", "ok", written, true) + "," +
                  row(silent, "null", "not written", "no telemetry from " + silent.path() + " within 1 s", false) +
                  "," +
                  row(lying, "\"KDX\"", "failed",
                      lying.path() + " holds different data after the write: byte 0 is 18, expected 7", true) +
                  "," + row(alsoGood, "\"KDX\"", "ok", written, true) + "]}\n");
    EXPECT_EQ(r.err, "kdxctl: 2 of 4 modules were not written and verified\n");

    const auto sample = bytesOf(file);
    EXPECT_EQ(good.memory(), sample);
    EXPECT_EQ(alsoGood.memory(), sample);
    EXPECT_EQ(silent.memory(), std::vector<uint8_t>(60, 0x11));
    EXPECT_TRUE(silent.received().empty());
    for (int i : {0, 2, 3})
        EXPECT_EQ(bytesOf(backupOf(undo, modules[i]->path())),
                  std::vector<uint8_t>(60, static_cast<uint8_t>(0x10 + i)));
    EXPECT_FALSE(fs::exists(backupOf(undo, silent.path())));

    // Undo: the backup written back restores the module.
    const KdxctlResult back = kdxctl({"write", "--no-backup", "--port", good.path(), backupOf(undo, good.path())});
    EXPECT_EQ(back.code, 0) << back.err;
    EXPECT_EQ(good.memory(), std::vector<uint8_t>(60, 0x10));
}

TEST(KdxctlBatch, ReadsEveryModuleIntoTheBackupFolder)
{
    ScriptedModule good({}), silent({.telemetry = false});
    good.setMemory(bytesOf(data("config_sample.kdx")));
    TempDir dir;
    const auto cwd = fs::current_path();
    fs::current_path(dir.path); // the default folder lands here
    const KdxctlResult r = kdxctl({"read", "--tsv", "--port", good.path(), "--port", silent.path()});
    fs::current_path(cwd);
    EXPECT_EQ(r.code, 1);
    std::string tsv;
    std::ifstream in(data("config_sample.tsv"));
    for (std::string line; std::getline(in, line);) tsv += good.path() + "\t" + line + "\n";
    EXPECT_EQ(r.out, tsv);
    const std::vector<fs::path> folders(fs::directory_iterator(dir.path), {});
    ASSERT_EQ(folders.size(), 1u);
    EXPECT_EQ(folders[0].filename().string().rfind("kdx-backup-", 0), 0u);
    EXPECT_EQ(bytesOf(backupOf(folders[0], good.path())), bytesOf(data("config_sample.kdx")));
    EXPECT_EQ(std::distance(fs::directory_iterator(folders[0]), {}), 1);
    EXPECT_NE(r.err.find(silent.path() + "  -       failed  no telemetry from " + silent.path() + " within 1 s\n"),
              std::string::npos)
        << r.err;
    EXPECT_EQ(r.err.substr(r.err.rfind("kdxctl: ")), "kdxctl: 1 of 2 modules could not be read\n");
}
