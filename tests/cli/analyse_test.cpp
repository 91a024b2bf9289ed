// kdxctl analyse as a script sees it: the columns, the exact failure lines, and the same
// numbers from a tuning file and from the log of the same sweep.
#include "cli/run_kdxctl.h"
#include "link/frame.h"
#include "link/receiver.h"
#include "sim/recording.h"
#include "sim/sim_harness.h"
#include "tuning/tuning_file.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <unistd.h>

using namespace kdx;
using kdx::test::kdxctl;
namespace fs = std::filesystem;

namespace {

// Runs in a folder of its own, so files are named as a user would type them.
class AnalyseCommand : public ::testing::Test {
protected:
    void SetUp() override
    {
        fs::create_directories(dir_);
        fs::current_path(dir_);
        write("a.btf", "AxisRate, AxisError, P,I,IA,D,V1,V2,G,Spare1,Spare2\r\n"
                       "1.00,-0.50,100.00,20.00,2.06,50.00,10.00,20.50,100.00,0,0\r\n"
                       "2.00,0.25\r\n"
                       "3.00,0.13\r\n");
        // Through a Q-Vane; the last line's axis was unknown, so it has no axis prefix.
        write("q \"x\".csv", "Axis,AxisID,AxisAngle,AxisRate,AxisError,Pcomp,Icomp,Dcomp,ExtGain%,ElecAngle,"
                             "Power%,Voltage\r\n"
                             "Tilt,0,1.00,2.00,0.30,0.00,0.00,0.00,100,1.0,15,12.6\r\n"
                             "Tilt,0,1.00,-2.00,-0.40,0.00,0.00,0.00,100,1.0,15,12.6\r\n"
                             "1.00,6.00,0.00,0.00,0.00,0.00,100,1.0,15,12.6\r\n");
    }
    void TearDown() override
    {
        fs::current_path(home_);
        fs::remove_all(dir_);
    }
    static void write(const std::string& name, const std::string& text)
    {
        std::ofstream(name, std::ios::binary) << text;
    }

    fs::path home_ = fs::current_path();
    fs::path dir_ = fs::temp_directory_path() / ("kdx_analyse_" + std::to_string(::getpid()) +
                                                 ::testing::UnitTest::GetInstance()->current_test_info()->name());
};

} // namespace

TEST_F(AnalyseCommand, OneLinePerFileInEachLayout)
{
    // a.btf: error RMS sqrt((0.25 + 0.0625 + 0.0169) / 3) = 0.331, rate RMS sqrt(14 / 3) = 2.16.
    // The log: sqrt((0.09 + 0.16) / 3) = 0.289 and sqrt(44 / 3) = 3.83. Three samples are
    // too few for a spectrum, and no jump is a set-point step.
    struct Case {
        std::vector<std::string> options;
        std::string out;
    };
    const Case cases[] = {
        {{},
         "file       samples  err_rms  err_peak  rate_rms  freq_hz  share  ringing  steps  overshoot_pct  rise_s  settle_s\n"
         "a.btf            3    0.331     0.500      2.16        -      -  no           0              -       -         -\n"
         "q \"x\".csv        3    0.289     0.400      3.83        -      -  no           0              -       -         -\n"},
        {{"--tsv"},
         "file\tsamples\terr_rms\terr_peak\trate_rms\tfreq_hz\tshare\tringing\tsteps\tovershoot_pct\trise_s\tsettle_s\n"
         "a.btf\t3\t0.331\t0.500\t2.16\t\t\tno\t0\t\t\t\n"
         "q \"x\".csv\t3\t0.289\t0.400\t3.83\t\t\tno\t0\t\t\t\n"},
        {{"--json"},
         "{\"file\":\"a.btf\",\"source\":\"tuning file\",\"motor\":null,\"samples\":3,\"err_rms\":0.331,"
         "\"err_peak\":0.500,\"rate_rms\":2.16,\"freq_hz\":null,\"share\":null,\"ringing\":false,\"steps\":0,"
         "\"overshoot_pct\":null,\"rise_s\":null,\"settle_s\":null,"
         "\"gains\":{\"P\":100.00,\"I\":20.00,\"IA\":2.06,\"D\":50.00,\"V1\":10.00,\"V2\":20.50,\"G\":100.00}}\n"
         "{\"file\":\"q \\\"x\\\".csv\",\"source\":\"Q-Vane log\",\"motor\":null,\"samples\":3,\"err_rms\":0.289,"
         "\"err_peak\":0.400,\"rate_rms\":3.83,\"freq_hz\":null,\"share\":null,\"ringing\":false,\"steps\":0,"
         "\"overshoot_pct\":null,\"rise_s\":null,\"settle_s\":null,\"gains\":null}\n"},
    };
    for (const Case& c : cases) {
        std::vector<std::string> args{"analyse"};
        args.insert(args.end(), c.options.begin(), c.options.end());
        args.insert(args.end(), {"a.btf", "q \"x\".csv"});
        const auto r = kdxctl(args);
        EXPECT_EQ(r.code, 0) << r.err;
        EXPECT_EQ(r.err, "");
        EXPECT_EQ(r.out, c.out);
    }
}

TEST_F(AnalyseCommand, EachBadFileIsOneLineAndTheOthersAreStillAnalysed)
{
    write("empty.csv", "");
    write("notes.txt", "hello\r\n");
    write("bad.btf", "AxisRate, AxisError, P,I,IA,D,V1,V2,G,Spare1,Spare2\r\n"
                     "1.00,-0.50,100.00,20.00,2.06,50.00,10.00,20.50,100.00,0,0\r\n"
                     "\r\n"
                     "2.00,x\r\n");
    write("short.csv", "AxisRate0,AxisError0,Pcomp0,Icomp0,Dcomp0,ExtGain0%,ElecAngle0,Power0%,AxisRate1,"
                       "AxisError1,Pcomp1,Icomp1,Dcomp1,ExtGain1%,ElecAngle1,Power1%,Voltage\r\n"
                       "0.91,-0.01,-0.61\n");
    struct Case {
        std::vector<std::string> args;
        std::string err;
    };
    const Case cases[] = {
        {{"missing.btf"}, "missing.btf: No such file or directory"},
        {{"."}, ".: Is a directory"},
        {{"empty.csv"}, "empty.csv: the file is empty"},
        {{"notes.txt"}, "notes.txt: neither a tuning file nor a telemetry log (its first line is neither header)"},
        {{"bad.btf"}, "bad.btf: line 4: the rate or error is not a number"},
        {{"short.csv"}, "short.csv: line 2: 3 fields where 17 were expected"},
        {{"--motor", "2", "q \"x\".csv"}, "q \"x\".csv: a Q-Vane log holds one motor"},
    };
    for (const Case& c : cases) {
        std::vector<std::string> args{"analyse", "a.btf"};
        args.insert(args.end(), c.args.begin(), c.args.end());
        const auto r = kdxctl(args);
        EXPECT_EQ(r.code, 1) << c.err;
        EXPECT_EQ(r.err, "kdxctl: analyse: " + c.err + "\n");
        EXPECT_NE(r.out.find("\na.btf        3    0.331     0.500      2.16"), std::string::npos) << r.out;
    }
    const auto none = kdxctl({"analyse", "--json", "missing.btf"});
    EXPECT_EQ(none.code, 1);
    EXPECT_EQ(none.out, "");
}

TEST_F(AnalyseCommand, UsageErrorsAnalyseNothing)
{
    const std::pair<std::vector<std::string>, std::string> cases[] = {
        {{}, "no file given"},
        {{"--tsv", "--json", "a.btf"}, "give --tsv or --json, not both"},
        {{"--motor", "0", "a.btf"}, "--motor is 1 or 2"},
        {{"--motor"}, "--motor needs 1 or 2"},
    };
    for (const auto& [args, what] : cases) {
        std::vector<std::string> full{"analyse"};
        full.insert(full.end(), args.begin(), args.end());
        const auto r = kdxctl(full);
        EXPECT_EQ(r.code, 2) << what;
        EXPECT_EQ(r.err, "kdxctl analyse: " + what + " (try kdxctl analyse --help)\n");
        EXPECT_EQ(r.out, "");
    }
}

TEST_F(AnalyseCommand, TuningFileAndDecodedLogOfTheSameSweepAgree)
{
    // Ten seconds of the simulated KDX with the tuning drive stepping motor 2, recorded as
    // raw bytes, then turned into a log by kdxctl decode and into a tuning file of that
    // motor's samples as the Tuning Display saves them.
    sim::Simulator simulator(sim::test::options(false, 7));
    simulator.consume(buildFrame(117, {2}));
    std::vector<uint8_t> recording;
    sim::runRecording(simulator, 10.0,
                      [&](std::span<const uint8_t> b) { recording.insert(recording.end(), b.begin(), b.end()); });
    write("sweep.rec", std::string(recording.begin(), recording.end()));
    ASSERT_EQ(kdxctl({"decode", "sweep.rec", "-o", "sweep.csv"}).code, 0);

    sim::test::Capture capture;
    Receiver rx(&capture);
    rx.receiveBytes(recording);
    TraceBuffer traces;
    const int n = static_cast<int>(capture.cyclic.size());
    ASSERT_EQ(n, 1000);
    for (int i = 0; i < n; ++i) {
        traces.RateTrace[i] = capture.cyclic[i].rate[1];
        traces.ErrorTrace[i] = capture.cyclic[i].error[1];
    }
    write("sweep.btf", tuningFileText(traces, n - 1, GainSet{}));

    const auto r = kdxctl({"analyse", "--motor", "2", "--tsv", "sweep.btf", "sweep.csv"});
    ASSERT_EQ(r.code, 0) << r.err;
    std::istringstream lines(r.out);
    std::string header, fromBtf, fromLog;
    std::getline(lines, header);
    std::getline(lines, fromBtf);
    std::getline(lines, fromLog);
    ASSERT_EQ(fromBtf.rfind("sweep.btf\t1000\t", 0), 0u) << fromBtf;
    EXPECT_EQ(fromBtf.substr(fromBtf.find('\t')), fromLog.substr(fromLog.find('\t')));
    EXPECT_EQ(fromBtf.find("\t\t"), std::string::npos) << "every column has a value: " << fromBtf;
    // Motor 1 did not step: the log's other columns give other numbers.
    EXPECT_EQ(kdxctl({"analyse", "--tsv", "sweep.csv"}).out.find(fromLog), std::string::npos);
}
