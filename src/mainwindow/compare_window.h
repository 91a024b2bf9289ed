#pragma once
// Compare with File: the differences between the configuration on screen and a backup
// file, one row per parameter in the units and under the names the main window shows,
// with "Load these values" (the main window's own File, Load, questions included) and
// "Close". Nothing is sent to the module from here.
#include "config/config_diff.h"
#include "config/param_fields.h"

#include <QDialog>

#include <functional>
#include <string>

class QComboBox;
class QLabel;
class QPushButton;
class QTableWidget;

namespace kdx {

class CompareWindow : public QDialog {
    Q_OBJECT
public:
    // The configuration on screen, as it stands when asked.
    using ScreenConfig = std::function<ConfigSnapshot()>;
    // The name the main window shows for a parameter of a motor (0 or 1).
    using ShownName = std::function<QString(const ParamField& field, int motor)>;
    // Loads the file as File, Load does, its questions included; true when it loaded.
    using LoadFile = std::function<bool(const std::string& path)>;

    // `file` is the backup as read from `path`. A two-motor file compared with the one
    // motor a Q-Vane target shows offers a motor chooser; otherwise a single-motor side
    // is compared with motor 1 of the other, where a load puts it.
    CompareWindow(std::string path, const ConfigSnapshot& file, ScreenConfig screen, ShownName name, LoadFile load,
                  QWidget* parent = nullptr);

    // Compares again, with the motor chosen and the screen as it is now.
    void Motorcb_Click();
    void Loadcb_Click();
    void Closecb_Click();

    QLabel* Filelb = nullptr;
    QComboBox* Motorcb = nullptr; // the file's motor; shown only for a two-motor file and one on screen
    QLabel* Summarylb = nullptr;
    QTableWidget* Differencesgr = nullptr; // Parameter, Motor, On screen, In file
    QPushButton* Loadcb = nullptr;
    QPushButton* Closecb = nullptr;

private:
    void compare();
    QString rowName(const ParamDifference& d) const;

    std::string path_;
    ConfigSnapshot file_;
    ScreenConfig screen_;
    ShownName name_;
    LoadFile load_;
    bool chooseMotor_ = false;
};

} // namespace kdx
