#include "fakes/program_rig.h"
#include "telemetry/cyclic_frames.h"
#include "windows/about_window.h"

#include <QCoreApplication>
#include <QImage>
#include <QLabel>
#include <QPushButton>
#include <QTest>
#include <gtest/gtest.h>

#include <string>

using namespace kdx;
using namespace kdx::test;

namespace {

// The program's name as the composition root sets it, for the length of a test.
struct ProgramName {
    QString saved = QCoreApplication::applicationName();
    ProgramName() { QCoreApplication::setApplicationName("KDX Tool"); }
    ~ProgramName() { QCoreApplication::setApplicationName(saved); }
};

bool anyPixelDrawn(const QImage& image)
{
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            if (qAlpha(image.pixel(x, y)) > 0) return true;
    return false;
}

} // namespace

TEST(AboutWindow, ShowsTheTitleTheBuildsVersionAndTheLogo)
{
    ProgramName name;
    ProgramRig r;
    FrmAbout about(r.main, r.dialogs);
    about.Form_Load();
    EXPECT_EQ(about.windowTitle(), "About KDX Tool");
    EXPECT_EQ(about.lblTitle->text(), "KDX Tool");
    const std::string version = "Version " + std::to_string(KDX_VERSION_MAJOR) + "." +
                                std::to_string(KDX_VERSION_MINOR) + "." + std::to_string(KDX_VERSION_PATCH);
    EXPECT_EQ(about.lblVersion->text().toStdString(), version);
    EXPECT_TRUE(anyPixelDrawn(about.picIcon->pixmap().toImage())) << "the logo did not load";
}

TEST(AboutWindow, RebootSendsTheDirectRestartInEitherTargetMode)
{
    for (bool qvane : {false, true}) {
        ProgramRig r;
        if (qvane) r.port.deliver(CyclicBytes::relayed().frame());
        ASSERT_EQ(r.main.TargetIsQVane, qvane);
        r.port.written.clear();
        FrmAbout about(r.main, r.dialogs);
        about.show();
        QTest::mouseClick(about.RebootIntoBL, Qt::LeftButton);
        EXPECT_EQ(r.port.written, (std::vector<uint8_t>{0x5A, 3, 254, 1})) << qvane; // 257 goes out as 1
        EXPECT_TRUE(r.dialogs.boxes.empty());                                        // no confirmation
        EXPECT_TRUE(about.isVisible());
        QTest::mouseClick(about.cmdOK, Qt::LeftButton);
        EXPECT_FALSE(about.isVisible());
        r.port.written.clear(); // the main window's button sends the same
        QTest::mouseClick(r.main.RestartIntoBLcb, Qt::LeftButton);
        EXPECT_EQ(r.port.written, (std::vector<uint8_t>{0x5A, 3, 254, 1})) << qvane;
    }
}

TEST(AboutWindow, SystemInformationIsUnavailableOffWindows)
{
#ifdef Q_OS_WIN
    GTEST_SKIP() << "starts the system-information program on Windows";
#endif
    ProgramName name;
    ProgramRig r;
    FrmAbout about(r.main, r.dialogs);
    about.StartSysInfo();
    ASSERT_EQ(r.dialogs.boxes.size(), 1u);
    EXPECT_EQ(r.dialogs.boxes[0].prompt, "System Information Is Unavailable At This Time");
    EXPECT_EQ(r.dialogs.boxes[0].style, box::OkOnly);
    EXPECT_EQ(r.dialogs.boxes[0].title, "KDX Tool");
}
