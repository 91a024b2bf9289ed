#pragma once
// The power-up wait window: asks for a module and, until one is heard, alternates the
// link between a direct KDX and a Q-Vane every half second.
#include <QWidget>

class QLabel;
class QPushButton;
class QTimer;

namespace kdx {

class ConnectionSelect;
class KeyState;
class LinkControl;
class PortStatus;
class QuitRequester;

class PUPWait : public QWidget {
    Q_OBJECT
public:
    // All must outlive the window.
    PUPWait(LinkControl& link, ConnectionSelect& connection, QuitRequester& quit, const KeyState& keys,
            PortStatus& ports, QWidget* parent = nullptr);

    // Shows the window and probes every half second until stopWaiting.
    void startWaiting();
    // Hides the window and stops probing.
    void stopWaiting();

    void InputSwitchTimer_Timer();
    void Image1_Click();
    void Quitcb_Click();
    // "Choose port...": the Comms Link window.
    void choosePort_Click();
    // "Open without a module": the working windows, as a Shift+click on the logo.
    void openWithoutModule_Click();
    // Shows the port listened on, or why none is open.
    void showPortLine();
    // Lets the window close for real (the program is ending).
    void unload();

    bool ListenForKDX = true;
    QLabel* Label1 = nullptr;
    QLabel* Image1 = nullptr;
    QPushButton* Quitcb = nullptr;
    QLabel* portLine = nullptr;
    QPushButton* choosePortButton = nullptr;
    QPushButton* openWithoutModuleButton = nullptr;
    QTimer* InputSwitchTimer = nullptr;

protected:
    void closeEvent(QCloseEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    LinkControl& link_;
    ConnectionSelect& connection_;
    QuitRequester& quit_;
    const KeyState& keys_;
    PortStatus& ports_;
    bool unloading_ = false;
};

} // namespace kdx
