#pragma once
// "Guided tuning", opened from the Tuning Display: says what the guide will do, takes
// its limits, runs the search on the selected motor and shows every candidate; at the
// end offers the best gains ("Use these gains" puts them into the gain panel as if
// typed) or the user's own ("Keep my gains"). STOP, the space bar, Esc and closing the
// window stop it, and the user's gains go back on the wire at once.
#include "tuning/tuning_guide.h"

#include <QWidget>

#include <array>
#include <functional>
#include <memory>

class QCheckBox;
class QComboBox;
class QDoubleSpinBox;
class QLabel;
class QPushButton;
class QTableWidget;

namespace kdx {

class GainPanel;
class GainSender;

class GuidePanel : public QWidget, public GuideOutput {
    Q_OBJECT
public:
    // `panel` gives the start and takes the result, `drive` carries the gain message;
    // `refresh` repaints the gain panel after a change made here. All outlive the window.
    GuidePanel(GainPanel& panel, GainSender& drive, std::function<void()> refresh, QWidget* parent = nullptr);
    ~GuidePanel() override;

    // ---- the tuning window's calls ----
    // One sample of a motor; only the tuned motor's go to the guide.
    void putSample(int motor, float rate, float error);
    // The gain message timer's tick: true when the guide sent it (the panel's values
    // must then not follow).
    bool gainMsgTick();
    // The link watchdog's loss call.
    void linkLost();
    bool running() const { return guide_ && guide_->running(); }

    // ---- handlers ----
    void Startcb_Click();
    void Stopcb_Click();
    void UseGainscb_Click();
    void KeepGainscb_Click();

    // ---- GuideOutput ----
    void sendGains(const GainSet& gains) override;
    void setGainMessage(bool on) override;

    // ---- controls ----
    QLabel* Aboutlb = nullptr;
    QDoubleSpinBox* MaxFactortb = nullptr;
    QComboBox* Sweepcb = nullptr;
    std::array<QCheckBox*, 4> Searchcb{}; // P, D, I, IA
    QPushButton* Startcb = nullptr;
    QPushButton* Stopcb = nullptr;
    QLabel* Statuslb = nullptr;
    QTableWidget* Resultstb = nullptr;
    QPushButton* UseGainscb = nullptr;
    QPushButton* KeepGainscb = nullptr;

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void closeEvent(QCloseEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void showState();

    GainPanel& panel_;
    GainSender& drive_;
    std::function<void()> refresh_;
    std::unique_ptr<TuningGuide> guide_;
    int motor_ = 0;
    int shownRows_ = 0;
};

} // namespace kdx
