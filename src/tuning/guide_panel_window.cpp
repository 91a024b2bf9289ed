#include "tuning/guide_panel_window.h"

#include "tuning/gain_panel.h"
#include "tuning/gain_sender.h"

#include <QCheckBox>
#include <QCloseEvent>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QPushButton>
#include <QTableWidget>
#include <QVBoxLayout>

#include <iterator>

namespace kdx {

namespace {

constexpr Gain kSearchable[4] = {Gain::P, Gain::D, Gain::I, Gain::IA};
constexpr const char* kSearchNames[4] = {"P", "D", "I", "I Angle"};

const char* kAbout = "The guide tries gains for the selected motor one at a time: a coarse pass over each gain's "
                     "range, then a fine pass around the best value. Each candidate goes to the module in the gain "
                     "message and is held for 2 s and then one sweep, while the same disturbance runs: press Tuning "
                     "in the main window for the tuning drive's steps, or hold the camera as you would. The RMS "
                     "error scores it, with a penalty for ringing and for overshoot of the steps.\n\n"
                     "Your gains go back to the module at once when you press STOP, the space bar or Esc, close "
                     "this window, when the link is lost, when a candidate rings hard or when the error doubles. "
                     "Nothing is written to the module's memory; at the end you choose.";

QString number(double v, int decimals) { return QString::number(v, 'f', decimals); }

const char* searchName(Gain g)
{
    for (std::size_t i = 0; i < std::size(kSearchable); ++i)
        if (kSearchable[i] == g) return kSearchNames[i];
    return "";
}

} // namespace

GuidePanel::GuidePanel(GainPanel& panel, GainSender& drive, std::function<void()> refresh, QWidget* parent)
    : QWidget(parent, Qt::Window), panel_(panel), drive_(drive), refresh_(std::move(refresh))
{
    setObjectName("GuidePanel");
    setWindowTitle("Guided tuning");
    auto* column = new QVBoxLayout(this);
    Aboutlb = new QLabel(kAbout, this);
    Aboutlb->setWordWrap(true);
    column->addWidget(Aboutlb);

    auto* form = new QFormLayout;
    MaxFactortb = new QDoubleSpinBox(this);
    MaxFactortb->setObjectName("MaxFactortb");
    MaxFactortb->setRange(1.0, 10.0);
    MaxFactortb->setSingleStep(0.5);
    MaxFactortb->setValue(2.0);
    MaxFactortb->setToolTip("Each gain stays between its value divided and multiplied by this");
    form->addRow("Largest change (times)", MaxFactortb);
    Sweepcb = new QComboBox(this);
    Sweepcb->setObjectName("Sweepcb");
    Sweepcb->addItems({"4 s", "10 s"});
    form->addRow("Sweep per candidate", Sweepcb);
    auto* gains = new QHBoxLayout;
    for (std::size_t i = 0; i < Searchcb.size(); ++i) {
        Searchcb[i] = new QCheckBox(kSearchNames[i], this);
        Searchcb[i]->setChecked(i < 2);
        gains->addWidget(Searchcb[i]);
    }
    form->addRow("Gains to search", gains);
    column->addLayout(form);

    auto* run = new QHBoxLayout;
    Startcb = new QPushButton("Start", this);
    Startcb->setObjectName("Startcb");
    Stopcb = new QPushButton("STOP", this);
    Stopcb->setObjectName("Stopcb");
    Stopcb->setToolTip("Stops the guide and puts your gains back at once (space bar or Esc)");
    run->addWidget(Startcb);
    run->addWidget(Stopcb);
    column->addLayout(run);
    Statuslb = new QLabel(this);
    Statuslb->setObjectName("Statuslb");
    column->addWidget(Statuslb);

    Resultstb = new QTableWidget(0, 5, this);
    Resultstb->setObjectName("Resultstb");
    Resultstb->setHorizontalHeaderLabels({"gains", "RMS error", "peak", "ringing", "overshoot %"});
    Resultstb->horizontalHeader()->setSectionResizeMode(QHeaderView::ResizeToContents);
    Resultstb->setEditTriggers(QAbstractItemView::NoEditTriggers);
    column->addWidget(Resultstb, 1);

    auto* end = new QHBoxLayout;
    UseGainscb = new QPushButton("Use these gains", this);
    UseGainscb->setObjectName("UseGainscb");
    KeepGainscb = new QPushButton("Keep my gains", this);
    KeepGainscb->setObjectName("KeepGainscb");
    end->addWidget(UseGainscb);
    end->addWidget(KeepGainscb);
    column->addLayout(end);

    connect(Startcb, &QPushButton::clicked, this, &GuidePanel::Startcb_Click);
    connect(Stopcb, &QPushButton::clicked, this, &GuidePanel::Stopcb_Click);
    connect(UseGainscb, &QPushButton::clicked, this, &GuidePanel::UseGainscb_Click);
    connect(KeepGainscb, &QPushButton::clicked, this, &GuidePanel::KeepGainscb_Click);
    // The space bar and Esc stop the guide wherever the focus is in this window.
    for (QWidget* w : findChildren<QWidget*>()) w->installEventFilter(this);
    showState();
}

GuidePanel::~GuidePanel()
{
    refresh_ = nullptr; // the tuning window is going too: restore, but paint nothing
    if (running()) guide_->stop();
}

void GuidePanel::Startcb_Click()
{
    if (running() || !panel_.TuningActive()) {
        if (!panel_.TuningActive()) Statuslb->setText("Pick a motor in the gain panel first.");
        return;
    }
    GuideSettings s;
    s.maxFactor = MaxFactortb->value();
    s.sweepSamples = Sweepcb->currentIndex() == 0 ? 400 : 1000;
    s.gains.clear();
    for (std::size_t i = 0; i < Searchcb.size(); ++i)
        if (Searchcb[i]->isChecked()) s.gains.push_back(kSearchable[i]);
    motor_ = panel_.MotorIndex();
    guide_ = std::make_unique<TuningGuide>(*this, s);
    Resultstb->setRowCount(0);
    shownRows_ = 0;
    guide_->start(panel_.values(), panel_.gainMsgEnabled());
    showState();
}

void GuidePanel::Stopcb_Click()
{
    if (running()) guide_->stop();
    showState();
}

void GuidePanel::linkLost()
{
    if (!running()) return;
    guide_->linkLost();
    showState();
}

void GuidePanel::putSample(int motor, float rate, float error)
{
    if (!running()) return;
    // Unticking "Enab" or picking the other motor takes the gain message back: stop.
    if (!panel_.gainMsgEnabled() || panel_.MotorIndex() != motor_) {
        Stopcb_Click();
        return;
    }
    if (motor != motor_) return;
    guide_->putSample(rate, error);
    if (static_cast<int>(guide_->rows().size()) != shownRows_ || !running()) showState();
}

bool GuidePanel::gainMsgTick()
{
    if (!running()) return false;
    guide_->gainMsgTick();
    return true;
}

void GuidePanel::sendGains(const GainSet& g) { drive_.SendPID(g.P, g.I, g.IA, g.D, g.G, g.V1, g.V2, motor_); }

void GuidePanel::setGainMessage(bool on)
{
    panel_.Enablecb_Click(on);
    if (refresh_) refresh_();
}

void GuidePanel::UseGainscb_Click()
{
    if (!guide_ || running() || !guide_->best()) return;
    const GainSet best = guide_->best()->gains;
    for (Gain g : guide_->settings().gains) panel_.EnterValue(g, best[g]);
    refresh_();
    guide_.reset();
    showState();
}

void GuidePanel::KeepGainscb_Click()
{
    if (running()) return;
    guide_.reset();
    showState();
}

void GuidePanel::showState()
{
    const bool runs = running();
    Startcb->setEnabled(!runs);
    Stopcb->setEnabled(runs);
    MaxFactortb->setEnabled(!runs);
    Sweepcb->setEnabled(!runs);
    for (QCheckBox* c : Searchcb) c->setEnabled(!runs);
    const bool offer = guide_ && !runs && guide_->best() && !(guide_->best()->gains == guide_->startGains());
    UseGainscb->setEnabled(offer);
    KeepGainscb->setEnabled(offer);
    if (!guide_) {
        Statuslb->setText(panel_.TuningActive() ? "Ready." : "Pick a motor in the gain panel first.");
        return;
    }
    QString status = QString::fromStdString(guide_->statusText());
    if (offer) {
        const GuideRow b = *guide_->best();
        status += QString(": best RMS error %1 against %2 with your gains")
                      .arg(number(b.errorRms, 3), number(guide_->rows().front().errorRms, 3));
    }
    Statuslb->setText(status);
    const auto& rows = guide_->rows();
    for (int i = shownRows_; i < static_cast<int>(rows.size()); ++i) {
        const GuideRow& r = rows[static_cast<std::size_t>(i)];
        QString gains;
        for (Gain g : guide_->settings().gains)
            gains += QString("%1%2 %3").arg(gains.isEmpty() ? "" : ", ", searchName(g),
                                            number(r.gains[g], g == Gain::IA ? 2 : 0));
        Resultstb->insertRow(i);
        const QString cells[5] = {gains, number(r.errorRms, 3), number(r.errorPeak, 3), number(r.ringing, 2),
                                  r.overshoot ? number(*r.overshoot, 1) : QString("-")};
        for (int c = 0; c < 5; ++c) Resultstb->setItem(i, c, new QTableWidgetItem(cells[c]));
    }
    shownRows_ = static_cast<int>(rows.size());
}

void GuidePanel::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Space || event->key() == Qt::Key_Escape) {
        Stopcb_Click();
        return;
    }
    QWidget::keyPressEvent(event);
}

bool GuidePanel::eventFilter(QObject* watched, QEvent* event)
{
    if (event->type() == QEvent::KeyPress) {
        const int key = static_cast<QKeyEvent*>(event)->key();
        if (key == Qt::Key_Space || key == Qt::Key_Escape) {
            Stopcb_Click();
            return true;
        }
    }
    return QWidget::eventFilter(watched, event);
}

void GuidePanel::closeEvent(QCloseEvent* event)
{
    Stopcb_Click();
    event->accept();
}

} // namespace kdx
