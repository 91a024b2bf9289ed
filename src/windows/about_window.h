#pragma once
// The About window: title, version, description, logo, and the restart of the module
// into its bootloader.
#include <QDialog>

class QLabel;
class QPushButton;

namespace kdx {

class BootloaderRestart;
class Dialogs;

class FrmAbout : public QDialog {
    Q_OBJECT
public:
    FrmAbout(BootloaderRestart& module, Dialogs& dialogs, QWidget* parent = nullptr);

    void Form_Load();
    void cmdOK_Click();
    // Calls the main window's RestartIntoBootloader; asks nothing.
    void RebootIntoBL_Click();
    // Starts the system-information program, or says it is unavailable.
    void StartSysInfo();

    QLabel* picIcon = nullptr;
    QLabel* lblTitle = nullptr;
    QLabel* lblVersion = nullptr;
    QPushButton* RebootIntoBL = nullptr;
    QPushButton* cmdOK = nullptr;

private:
    BootloaderRestart& module_;
    Dialogs& dialogs_;
};

} // namespace kdx
