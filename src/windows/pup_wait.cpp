#include "windows/pup_wait.h"

#include "config/connection_select.h"
#include "link/link_control.h"
#include "link/port_status.h"
#include "platform/key_state.h"
#include "platform/program_windows.h"
#include "platform/qt_guard.h"
#include "platform/qt_window_close.h"
#include "widgets/text.h"
#include "windows/velmor_logo.h"

#include <QCloseEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QMouseEvent>
#include <QPushButton>
#include <QTimer>
#include <QVBoxLayout>

namespace kdx {

PUPWait::PUPWait(LinkControl& link, ConnectionSelect& connection, QuitRequester& quit, const KeyState& keys,
                 PortStatus& ports, QWidget* parent)
    : QWidget(parent, Qt::Window), link_(link), connection_(connection), quit_(quit), keys_(keys), ports_(ports)
{
    setObjectName("PUPWait");
    setWindowTitle("VELMOR Brushless Driver");
    auto* layout = new QVBoxLayout(this);
    Image1 = new QLabel(this);
    Image1->setObjectName("Image1");
    Image1->setAlignment(Qt::AlignCenter);
    Image1->setPixmap(velmorLogo(kVelmorLogoSize, devicePixelRatioF()));
    Image1->setToolTip("Shift+click to open the working windows without a module");
    Image1->installEventFilter(this);
    layout->addWidget(Image1);
    Label1 = new QLabel("Please connect a Q-Vane KDX Module", this);
    Label1->setObjectName("Label1");
    Label1->setAlignment(Qt::AlignCenter);
    layout->addWidget(Label1);
    portLine = new QLabel(this);
    portLine->setObjectName("portLine");
    portLine->setAlignment(Qt::AlignCenter);
    portLine->setWordWrap(true);
    portLine->setTextInteractionFlags(Qt::TextSelectableByMouse); // the hint's command can be copied
    layout->addWidget(portLine);

    auto* buttons = new QHBoxLayout;
    choosePortButton = new QPushButton("Choose port...", this);
    choosePortButton->setObjectName("choosePortButton");
    connect(choosePortButton, &QPushButton::clicked, this,
            [this] { guarded("choosePort_Click", [&] { choosePort_Click(); }); });
    openWithoutModuleButton = new QPushButton("Open without a module", this);
    openWithoutModuleButton->setObjectName("openWithoutModuleButton");
    openWithoutModuleButton->setToolTip("Open the working windows to look at files and settings");
    connect(openWithoutModuleButton, &QPushButton::clicked, this,
            [this] { guarded("openWithoutModule_Click", [&] { openWithoutModule_Click(); }); });
    Quitcb = new QPushButton("Quit", this);
    Quitcb->setObjectName("Quitcb");
    connect(Quitcb, &QPushButton::clicked, this, [this] { guarded("Quitcb_Click", [&] { Quitcb_Click(); }); });
    buttons->addWidget(choosePortButton);
    buttons->addWidget(openWithoutModuleButton);
    buttons->addWidget(Quitcb);
    layout->addLayout(buttons);
    // The window's title stays whole in the title bar.
    setMinimumWidth(fontMetrics().horizontalAdvance(windowTitle()) + 160);

    InputSwitchTimer = new QTimer(this);
    InputSwitchTimer->setObjectName("InputSwitchTimer");
    InputSwitchTimer->setInterval(500);
    connect(InputSwitchTimer, &QTimer::timeout, this,
            [this] { guarded("InputSwitchTimer_Timer", [&] { InputSwitchTimer_Timer(); }); });
}

void PUPWait::InputSwitchTimer_Timer()
{
    if (ListenForKDX) {
        link_.SetBaudForKDX();
    } else {
        link_.SetBaudForQVane();
        connection_.KDXAxisSelcb_Click(0); // ask a Q-Vane for its Tilt axis
    }
    ListenForKDX = !ListenForKDX;
    showPortLine(); // follows a port chosen meanwhile in the Comms Link window
}

void PUPWait::showPortLine()
{
    const std::string port = ports_.listeningPort();
    const std::string text = port.empty() ? "No port open: " + ports_.portProblem() : "Listening on " + port;
    showText(portLine, text);
}

void PUPWait::choosePort_Click() { ports_.showPortChoice(); }

void PUPWait::openWithoutModule_Click() { connection_.SetDisplayVisible(); }

void PUPWait::Image1_Click()
{
    if (keys_.shiftDown()) connection_.SetDisplayVisible();
}

void PUPWait::Quitcb_Click() { quit_.RemoteQueryUnload(); }

void PUPWait::startWaiting()
{
    showPortLine();
    show();
    InputSwitchTimer->start();
}

void PUPWait::stopWaiting()
{
    hide();
    InputSwitchTimer->stop();
}

void PUPWait::unload()
{
    unloading_ = true;
    InputSwitchTimer->stop();
    close();
}

bool PUPWait::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == Image1 && event->type() == QEvent::MouseButtonRelease &&
        static_cast<QMouseEvent*>(event)->button() == Qt::LeftButton)
        guarded("Image1_Click", [&] { Image1_Click(); });
    return QWidget::eventFilter(watched, event);
}

void PUPWait::closeEvent(QCloseEvent* event)
{
    // Closing the wait window asks the program to quit; when it does, the window goes.
    closeUnlessUnloading(event, unloading_, [this] { guarded("Quitcb_Click", [&] { Quitcb_Click(); }); });
    if (unloading_) event->accept();
}

} // namespace kdx

#include "moc_pup_wait.cpp"
