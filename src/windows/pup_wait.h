#pragma once
// The power-up wait window: asks for a module and, until one is heard, alternates the
// link between a direct KDX and a Q-Vane every half second.
#include "mainwindow/workspace.h"

#include <QWidget>

class QLabel;
class QPushButton;
class QTimer;

namespace kdx {

class PUPWait : public QWidget {
    Q_OBJECT
public:
    explicit PUPWait(Workspace& ws, QWidget* parent = nullptr);

    void InputSwitchTimer_Timer();
    void Image1_Click();
    void Quitcb_Click();
    // Lets the window close for real (the program is ending).
    void unload();

    bool ListenForKDX = true;
    QLabel* Label1 = nullptr;
    QLabel* Image1 = nullptr;
    QPushButton* Quitcb = nullptr;
    QTimer* InputSwitchTimer = nullptr;

protected:
    void closeEvent(QCloseEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    Workspace& ws_;
    bool unloading_ = false;
};

} // namespace kdx
