#include "windows/about_window.h"

#include "link/link_control.h"
#include "platform/dialogs.h"
#include "platform/qt_guard.h"
#include "windows/velmor_logo.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QFont>
#include <QFrame>
#include <QHBoxLayout>
#include <QLabel>
#include <QPalette>
#include <QProcess>
#include <QPushButton>
#include <QSettings>
#include <QVBoxLayout>

namespace kdx {

namespace {

constexpr char kForumLine[] =
    "Questions, tips and firmware news: the <a href=\"https://forum.velmor.example/kdx\">VELMOR support forum</a>";
constexpr char kWebLine[] = "<a href=\"https://www.velmor.example\">www.velmor.example</a>";
constexpr char kMakerLine[] = "by VELMOR Systems";
constexpr char kSysInfoUnavailable[] = "System Information Is Unavailable At This Time";

QFrame* line(const char* name, QWidget* parent)
{
    auto* f = new QFrame(parent);
    f->setObjectName(name);
    f->setFrameShape(QFrame::HLine);
    f->setFrameShadow(QFrame::Plain);
    QPalette p = f->palette();
    p.setColor(QPalette::WindowText, p.color(QPalette::Mid));
    f->setPalette(p);
    return f;
}

QLabel* description(const char* name, const char* text, QWidget* parent)
{
    auto* l = new QLabel(QString::fromUtf8(text), parent);
    l->setObjectName(name);
    l->setOpenExternalLinks(true);
    return l;
}

// The system-information program, where the registry names one; none elsewhere.
QString sysInfoProgram()
{
#ifdef Q_OS_WIN
    const QSettings tools(R"(HKEY_LOCAL_MACHINE\SOFTWARE\Microsoft\Shared Tools\MSINFO)", QSettings::NativeFormat);
    const QString path = tools.value("PATH").toString();
    if (!path.isEmpty()) return path;
    const QSettings location(R"(HKEY_LOCAL_MACHINE\SOFTWARE\Microsoft\Shared Tools Location)", QSettings::NativeFormat);
    const QString folder = location.value("MSINFO").toString();
    const QString program = folder + "\\MSINFO32.EXE";
    if (!folder.isEmpty() && QFileInfo::exists(program)) return program;
#endif
    return {};
}

} // namespace

FrmAbout::FrmAbout(BootloaderRestart& module, Dialogs& dialogs, QWidget* parent)
    : QDialog(parent), module_(module), dialogs_(dialogs)
{
    setObjectName("frmAbout");
    setWindowTitle("About ...");
    setModal(true);

    auto* layout = new QVBoxLayout(this);
    auto* top = new QHBoxLayout;
    picIcon = new QLabel(this);
    picIcon->setObjectName("picIcon");
    picIcon->setPixmap(velmorLogo(kVelmorLogoSize, devicePixelRatioF()));
    top->addWidget(picIcon, 0, Qt::AlignTop);
    auto* heading = new QVBoxLayout;
    lblTitle = new QLabel("Brushless Motor Driver", this);
    lblTitle->setObjectName("lblTitle");
    QFont titleFont = lblTitle->font();
    titleFont.setPointSizeF(titleFont.pointSizeF() * 1.6);
    titleFont.setBold(true);
    lblTitle->setFont(titleFont);
    heading->addWidget(lblTitle);
    lblVersion = new QLabel("Version 0.1", this);
    lblVersion->setObjectName("lblVersion");
    heading->addWidget(lblVersion);
    heading->addStretch();
    top->addLayout(heading, 1);
    layout->addLayout(top);

    layout->addWidget(line("Line1_0", this));
    layout->addWidget(description("lblDescription", kForumLine, this));
    layout->addWidget(description("lblWeb", kWebLine, this));
    layout->addWidget(description("lblMaker", kMakerLine, this));
    layout->addWidget(line("Line1_1", this));

    auto* buttons = new QHBoxLayout;
    RebootIntoBL = new QPushButton("Reboot into Bootloader", this);
    RebootIntoBL->setObjectName("RebootIntoBL");
    RebootIntoBL->setAutoDefault(false);
    RebootIntoBL->setToolTip("Restarts the connected KDX module into its bootloader, for a firmware update");
    connect(RebootIntoBL, &QPushButton::clicked, this,
            [this] { guarded("RebootIntoBL_Click", [&] { RebootIntoBL_Click(); }); });
    buttons->addWidget(RebootIntoBL);
    buttons->addStretch();
    cmdOK = new QPushButton("OK", this);
    cmdOK->setObjectName("cmdOK");
    cmdOK->setDefault(true);
    connect(cmdOK, &QPushButton::clicked, this, [this] { guarded("cmdOK_Click", [&] { cmdOK_Click(); }); });
    buttons->addWidget(cmdOK);
    layout->addLayout(buttons);
    layout->setSizeConstraint(QLayout::SetFixedSize);

    Form_Load();
}

void FrmAbout::Form_Load()
{
    const QString title = QCoreApplication::applicationName();
    setWindowTitle("About " + title);
    lblVersion->setText(
        QString("Version %1.%2.%3").arg(KDX_VERSION_MAJOR).arg(KDX_VERSION_MINOR).arg(KDX_VERSION_PATCH));
    lblTitle->setText(title);
}

void FrmAbout::cmdOK_Click() { accept(); }

void FrmAbout::RebootIntoBL_Click() { module_.RestartIntoBootloader(); }

void FrmAbout::StartSysInfo()
{
    const QString program = sysInfoProgram();
    if (!program.isEmpty() && QProcess::startDetached(program, {})) return;
    dialogs_.MsgBox(kSysInfoUnavailable, box::OkOnly, QCoreApplication::applicationName().toStdString());
}

} // namespace kdx

#include "moc_about_window.cpp"
