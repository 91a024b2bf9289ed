#include "tuning/graph_win_window.h"

#include "tuning/guide_panel_window.h"

#include "core/colour.h"
#include "widgets/click_label.h"
#include "platform/program_windows.h"
#include "platform/qt_guard.h"
#include "platform/qt_window_close.h"
#include "tuning/gain_sender.h"
#include "tuning/gain_store.h"
#include "tuning/graph_view_window.h"
#include "tuning/graph_win_model.h"
#include "tuning/sweep_panel_window.h"
#include "tuning/tuning_texts.h"
#include "widgets/face_colour.h"
#include "widgets/text.h"

#include <QAction>
#include <QCheckBox>
#include <QCloseEvent>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QPushButton>
#include <QScreen>
#include <QSignalBlocker>
#include <QTimer>
#include <QVBoxLayout>

#include <cmath>
#include <string_view>

namespace kdx {

namespace {

constexpr int kGainMsgIntervalMs = 40;
constexpr int kLabelColumnWidth = 44;
constexpr int kIndicatorSize = 14;

QColor qcolour(uint32_t bgr)
{
    const Rgb c = fromBgr(bgr);
    return QColor(c.r, c.g, c.b);
}

// One row of the gain panel and the members that hold its controls.
struct GainRow {
    Gain gain;
    std::string_view caption;
    ClickLabel* GraphWin::*label;
    std::array<QPushButton*, 2> GraphWin::*inc;
    std::array<QPushButton*, 2> GraphWin::*dec;
    const char* incName;
    const char* decName;
};

const GainRow kGainRows[kGainCount] = {
    {Gain::P, "P", &GraphWin::Ptb, &GraphWin::PInccb, &GraphWin::PDeccb, "PInccb", "PDeccb"},
    {Gain::I, "I", &GraphWin::Itb, &GraphWin::IInccb, &GraphWin::IDeccb, "IInccb", "IDeccb"},
    {Gain::IA, tuning_text::IAngleCaption, &GraphWin::IAtb, &GraphWin::IAInccb, &GraphWin::IADeccb, "IAInccb",
     "IADeccb"},
    {Gain::D, "D", &GraphWin::Dtb, &GraphWin::DInccb, &GraphWin::DDeccb, "DInccb", "DDeccb"},
    {Gain::V1, "V1", &GraphWin::V1tb, &GraphWin::V1Inccb, &GraphWin::V1Deccb, "V1Inccb", "V1Deccb"},
    {Gain::V2, "V2", &GraphWin::V2tb, &GraphWin::V2Inccb, &GraphWin::V2Deccb, "V2Inccb", "V2Deccb"},
    {Gain::G, "G", &GraphWin::Gtb, &GraphWin::GInccb, &GraphWin::GDeccb, "GInccb", "GDeccb"},
};

// Captions of the step buttons, fine step first.
constexpr std::array<std::string_view, 2> kIncCaptions = {"+", "++"};
constexpr std::array<std::string_view, 2> kDecCaptions = {"-", "--"};

} // namespace

template <typename Sender, typename Signal, typename Handler>
void GraphWin::on(Sender* sender, Signal signal, Handler handler)
{
    // A fault is reported under the name of the control or timer that raised the event.
    connect(sender, signal, this,
            [name = sender->objectName().toUtf8(), handler] { guarded(name.constData(), handler); });
}

template <typename Handler>
QPushButton* GraphWin::addButton(QWidget* parent, QBoxLayout* row, const QString& caption, const QString& name,
                                 std::string_view tip, Handler handler)
{
    auto* b = new QPushButton(caption, parent);
    b->setObjectName(name);
    if (!tip.empty()) b->setToolTip(qs(tip));
    on(b, &QPushButton::clicked, handler);
    if (row) row->addWidget(b);
    return b;
}

GraphWin::GraphWin(GainStore& config, GainSender& drive, ProgramWindows& windows, QuitRequester& quit, Dialogs& dialogs,
                   const KeyState& keys, const AtomicSaver& saver, QWidget* parent)
    : QMainWindow(parent), config_(config), drive_(drive), windows_(windows), quit_(quit)
{
    setObjectName("GraphWin");
    setWindowTitle(qs(tuning_text::WindowCaption));

    auto* central = new QWidget(this);
    auto* top = new QVBoxLayout(central);
    buildGraph(central);
    top->addWidget(Graphfr, 1);

    // The renderer draws from the first resize on; until then the picture has no area.
    model_ = std::make_unique<GraphWinModel>(Graphpb->canvas(), config_, dialogs, keys, saver);

    auto* bottom = new QHBoxLayout;
    buildControls(central);
    buildGainPanel(central);
    buildMemoryAndFiles(central);
    bottom->addWidget(Controlsfr);
    bottom->addWidget(Gainfr);
    auto* right = new QVBoxLayout;
    right->addWidget(MemoryFr);
    right->addWidget(TracesLoadSavefr);
    right->addStretch(1);
    bottom->addLayout(right);
    bottom->addStretch(1);
    top->addLayout(bottom);
    setCentralWidget(central);
    buildMenus();

    // The sweep panel: a frame between the graph and the controls, its entries in the
    // File menu before Exit.
    SweepPanelfr = new SweepPanel(model_->review(), dialogs, central);
    top->insertWidget(1, SweepPanelfr);
    SweepPanelfr->addMenuEntries(menuBar()->findChild<QMenu*>("mnuFile"), mnuExit);
    SweepPanelfr->setGraphParts(Graphfr, {labelColumn_[0], Graphpb, labelColumn_[1], AxisRatelb, AxisAnglelb});

    GainMsgTmr = new QTimer(this);
    GainMsgTmr->setObjectName("GainMsgTmr");
    GainMsgTmr->setInterval(kGainMsgIntervalMs);
    on(GainMsgTmr, &QTimer::timeout, [this] { GainMsgTmr_Timer(); });

    // The space bar is STOP/START wherever the focus is, before any control sees it.
    for (QWidget* w : findChildren<QWidget*>())
        if (w->focusPolicy() != Qt::NoFocus) w->installEventFilter(this);

    Graphpb->setOnResized([this] { guarded("Graphpb_Resize", [&] { model_->renderer().RedrawTraces(); }); });
    showAll();
    resize(1000, 720);
    resize(width(), height() + SweepPanelfr->sizeHint().height() + top->spacing()); // the graph keeps its size
}

GraphWin::~GraphWin() = default;

// ---- layout --------------------------------------------------------------------------

void GraphWin::buildGraph(QWidget* central)
{
    Graphfr = new QGroupBox(central);
    Graphfr->setObjectName("Graphfr");
    auto* frame = new QVBoxLayout(Graphfr);

    auto* legend = new QHBoxLayout;
    AxisRatelb = new QLabel(qs(tuning_text::AxisRateCaption), Graphfr);
    AxisRatelb->setObjectName("AxisRatelb");
    AxisAnglelb = new QLabel(qs(tuning_text::AxisErrorCaption), Graphfr);
    AxisAnglelb->setObjectName("AxisAnglelb");
    const std::array<std::pair<QLabel*, uint32_t>, 2> legends = {
        {{AxisRatelb, graph_colour::RateTrace}, {AxisAnglelb, graph_colour::ErrorTrace}}};
    for (const auto& [label, colour] : legends) {
        // Trace colours are light: shown on the graph's own grey so they read as the traces do.
        QPalette p = label->palette();
        p.setColor(QPalette::WindowText, qcolour(colour));
        p.setColor(QPalette::Window, qcolour(graph_colour::Background));
        label->setPalette(p);
        label->setAutoFillBackground(true);
        label->setMargin(2);
    }
    legend->addSpacing(kLabelColumnWidth);
    legend->addWidget(AxisRatelb);
    legend->addStretch(1);
    FullWidthcb = addButton(Graphfr, legend, "Full Width", "FullWidthcb", tuning_text::FullWidthTip,
                            [this] { FullWidthcb_Click(); });
    legend->addStretch(1);
    legend->addWidget(AxisAnglelb);
    legend->addSpacing(kLabelColumnWidth);
    frame->addLayout(legend);

    auto* row = new QHBoxLayout;
    row->setSpacing(2);
    Graphpb = new GraphView(Graphfr);
    Graphpb->setObjectName("Graphpb");
    for (int axis = 0; axis < 2; ++axis) {
        auto* column = new QWidget(Graphfr);
        column->setFixedWidth(kLabelColumnWidth);
        std::array<QLabel*, 9>& labels = axis == 0 ? Y1lb : Y2lb;
        for (int i = 0; i < kAxisLabelCount; ++i) {
            auto* l = new QLabel(column);
            l->setObjectName(QString("Y%1lb%2").arg(axis + 1).arg(i));
            l->setAlignment((axis == 0 ? Qt::AlignRight : Qt::AlignLeft) | Qt::AlignVCenter);
            l->resize(kLabelColumnWidth, l->fontMetrics().height() + 2);
            labels[static_cast<std::size_t>(i)] = l;
        }
        labelColumn_[static_cast<std::size_t>(axis)] = column;
    }
    row->addWidget(labelColumn_[0]);
    row->addWidget(Graphpb, 1);
    row->addWidget(labelColumn_[1]);
    frame->addLayout(row, 1);

    Graphpb->canvas().setOnLabels([this](int axis, const AxisLabels& l) { placeAxisLabels(axis, l); });
}

void GraphWin::placeAxisLabels(int axis, const AxisLabels& labels)
{
    const std::array<QLabel*, 9>& shown = axis == 0 ? Y1lb : Y2lb;
    // The columns stand beside the picture with the same top, so a grid line's height
    // in the picture is its height in the column.
    const int offset = Graphpb->y() - labelColumn_[static_cast<std::size_t>(axis)]->y();
    for (int i = 0; i < kAxisLabelCount; ++i) {
        QLabel* l = shown[static_cast<std::size_t>(i)];
        const AxisLabel& a = labels[static_cast<std::size_t>(i)];
        showText(l, a.text);
        const QPoint at(0, offset + static_cast<int>(std::lround(a.y)) - l->height() / 2);
        if (l->pos() != at) l->move(at);
    }
}

void GraphWin::buildControls(QWidget* parent)
{
    Controlsfr = new QGroupBox("Controls", parent);
    Controlsfr->setObjectName("Controlsfr");
    auto* grid = new QGridLayout(Controlsfr);

    auto* trigger = new QGroupBox("Trigger", Controlsfr);
    auto* triggerRow = new QHBoxLayout(trigger);
    RepeatTrigcb = addButton(trigger, triggerRow, qs(tuning_text::RepeatCaption), "RepeatTrigcb",
                             tuning_text::RepeatTip, [this] { RepeatTrigcb_Click(); });
    NowTrigcb = addButton(trigger, triggerRow, qs(tuning_text::SingleCaption), "NowTrigcb", tuning_text::SingleTip,
                          [this] { NowTrigcb_Click(); });
    grid->addWidget(trigger, 0, 0);

    StopTracecb = addButton(Controlsfr, nullptr, qs(tuning_text::StopCaption), "StopTracecb", tuning_text::StopTip,
                            [this] { StopTracecb_Click(); });
    StopTracecb->setMinimumHeight(40);
    grid->addWidget(StopTracecb, 0, 1);

    auto* duration = new QGroupBox("Trace Duration", Controlsfr);
    auto* durationRow = new QHBoxLayout(duration);
    const std::array<const char*, 4> names = {"Trace5scb", "Trace10scb", "Trace30scb", "Trace60scb"};
    for (std::size_t i = 0; i < 4; ++i) {
        const int index = static_cast<int>(i);
        TraceDurationcb[i] = addButton(duration, durationRow, QString("%1s").arg(kTraceDurations[i].seconds), names[i],
                                       tuning_text::DurationTips[i], [this, index] { TraceDurationcb_Click(index); });
    }
    Trace5scb = TraceDurationcb[0];
    Trace10scb = TraceDurationcb[1];
    Trace30scb = TraceDurationcb[2];
    Trace60scb = TraceDurationcb[3];
    grid->addWidget(duration, 1, 0, 1, 2);

    auto* clear = new QGroupBox("Disp Clear", Controlsfr);
    DisplayClearcb = addButton(clear, new QHBoxLayout(clear), qs(tuning_text::DisplayClearOn), "DisplayClearcb",
                               tuning_text::DisplayClearTip, [this] { DisplayClearcb_Click(); });
    grid->addWidget(clear, 2, 0);

    auto* scale = new QGroupBox("Scale", Controlsfr);
    auto* scaleRow = new QHBoxLayout(scale);
    AutoScalecb = addButton(scale, scaleRow, qs(tuning_text::AutoScaleCaption), "AutoScalecb",
                            tuning_text::AutoScaleTip, [this] { AutoScalecb_Click(); });
    DefaultScalecb = addButton(scale, scaleRow, qs(tuning_text::DefaultScaleCaption), "DefaultScalecb",
                               tuning_text::DefaultScaleTip, [this] { DefaultScalecb_Click(); });
    grid->addWidget(scale, 2, 1);

    auto* input = new QHBoxLayout;
    InputValidInd = new QLabel(Controlsfr);
    InputValidInd->setObjectName("InputValidInd");
    InputValidInd->setFixedSize(kIndicatorSize, kIndicatorSize);
    InputValidInd->setFrameShape(QFrame::Box);
    InputValidInd->setToolTip("Command input: green valid, red invalid");
    input->addWidget(InputValidInd);
    input->addWidget(new QLabel("Input", Controlsfr));
    input->addStretch(1);
    grid->addLayout(input, 3, 0, 1, 2);
    grid->setRowStretch(4, 1);
}

void GraphWin::buildGainPanel(QWidget* parent)
{
    Gainfr = new QGroupBox("Gain", parent);
    Gainfr->setObjectName("Gainfr");
    auto* grid = new QGridLayout(Gainfr);
    grid->setVerticalSpacing(2);

    auto* motor = new QGroupBox("Motor", Gainfr);
    auto* motorRow = new QHBoxLayout(motor);
    for (int i = 0; i < 2; ++i)
        MotorSelcb[static_cast<std::size_t>(i)] =
            addButton(motor, motorRow, QString::number(i + 1), QString("MotorSelcb%1").arg(i),
                      tuning_text::MotorTips[static_cast<std::size_t>(i)], [this, i] { MotorSelcb_Click(i); });
    grid->addWidget(motor, 0, 0, 1, 4);
    Enablecb = new QCheckBox(qs(tuning_text::EnableCaption), Gainfr);
    Enablecb->setObjectName("Enablecb");
    Enablecb->setToolTip(qs(tuning_text::EnableTip));
    on(Enablecb, &QCheckBox::clicked, [this] { Enablecb_Click(); });
    grid->addWidget(Enablecb, 0, 4, 1, 2);

    for (const GainRow& r : kGainRows) {
        const int row = 1 + static_cast<int>(r.gain);
        const GainEntry& e = gainEntry(r.gain);
        grid->addWidget(new QLabel(qs(r.caption), Gainfr), row, 0);
        auto* value = new ClickLabel(Gainfr);
        value->setObjectName(qs(e.label));
        value->setToolTip(qs(tuning_text::GainTips[static_cast<std::size_t>(r.gain)]));
        value->setMinimumWidth(64);
        const Gain g = r.gain;
        on(value, &ClickLabel::clicked, [this, g] { ValueTb_Click(g); });
        this->*r.label = value;
        for (int i = 0; i < 2; ++i) {
            const auto k = static_cast<std::size_t>(i);
            QPushButton* dec = addButton(Gainfr, nullptr, qs(kDecCaptions[k]), QString("%1%2").arg(r.decName).arg(i),
                                         "", [this, g, i] { Deccb_Click(g, i); });
            QPushButton* inc = addButton(Gainfr, nullptr, qs(kIncCaptions[k]), QString("%1%2").arg(r.incName).arg(i),
                                         "", [this, g, i] { Inccb_Click(g, i); });
            dec->setFixedWidth(30);
            inc->setFixedWidth(30);
            (this->*r.dec)[k] = dec;
            (this->*r.inc)[k] = inc;
            grid->addWidget(dec, row, 2 - i); // coarse steps outermost
            grid->addWidget(inc, row, 4 + i);
        }
        grid->addWidget(value, row, 3);
    }

    LockVcb = new QCheckBox(qs(tuning_text::LockCaption), Gainfr);
    LockVcb->setObjectName("LockVcb");
    LockVcb->setToolTip(qs(tuning_text::LockTip));
    on(LockVcb, &QCheckBox::clicked, [this] { LockVcb_Click(); });
    grid->addWidget(LockVcb, 1 + static_cast<int>(Gain::V1), 6, 2, 1);

    auto* actions = new QHBoxLayout;
    Revertcb = addButton(Gainfr, actions, qs(tuning_text::RevertCaption), "Revertcb", tuning_text::RevertTip,
                         [this] { Revertcb_Click(); });
    SaveGaincb = addButton(Gainfr, actions, qs(tuning_text::UpdateConfigCaption), "SaveGaincb",
                           tuning_text::UpdateConfigTip, [this] { SaveGaincb_Click(); });
    Guidecb = addButton(Gainfr, actions, "Guide...", "Guidecb", "Lets the program search for good gains, safely",
                        [this] { Guidecb_Click(); });
    grid->addLayout(actions, 1 + kGainCount, 0, 1, 7);
}

void GraphWin::buildMemoryAndFiles(QWidget* parent)
{
    MemoryFr = new QGroupBox("Memory", parent);
    MemoryFr->setObjectName("MemoryFr");
    auto* grid = new QGridLayout(MemoryFr);
    grid->setVerticalSpacing(2);
    for (int i = 0; i < kGainMemoryButtons; ++i) {
        const auto k = static_cast<std::size_t>(i);
        MemIDlb[k] = new QLabel(QString::number(i + 1), MemoryFr);
        MemIDlb[k]->setObjectName(QString("MemIDlb%1").arg(i));
        MemStorecb[k] = addButton(MemoryFr, nullptr, qs(tuning_text::StoreCaption), QString("MemStorecb%1").arg(i),
                                  tuning_text::StoreTip, [this, i] { MemStorecb_Click(i); });
        MemReccb[k] = addButton(MemoryFr, nullptr, qs(tuning_text::RecallCaption), QString("MemReccb%1").arg(i),
                                tuning_text::RecallTip, [this, i] { MemReccb_Click(i); });
        grid->addWidget(MemIDlb[k], i, 0);
        grid->addWidget(MemStorecb[k], i, 1);
        grid->addWidget(MemReccb[k], i, 2);
    }

    TracesLoadSavefr = new QGroupBox("Display File", parent);
    TracesLoadSavefr->setObjectName("TracesLoadSavefr");
    auto* row = new QHBoxLayout(TracesLoadSavefr);
    SaveTracecb = addButton(TracesLoadSavefr, row, qs(tuning_text::SaveTraceCaption), "SaveTracecb",
                            tuning_text::SaveTraceTip, [this] { SaveTracecb_Click(); });
    LoadTracecb = addButton(TracesLoadSavefr, row, qs(tuning_text::LoadTraceCaption), "LoadTracecb",
                            tuning_text::LoadTraceTip, [this] { LoadTracecb_Click(); });
}

void GraphWin::buildMenus()
{
    QMenu* file = menuBar()->addMenu("&File");
    file->setObjectName("mnuFile");
    mnuSaveTrace =
        file->addAction("&Save...", this, [this] { guarded("mnuSaveTrace_Click", [&] { mnuSaveTrace_Click(); }); });
    mnuSaveTrace->setObjectName("mnuSaveTrace");
    mnuLoad = file->addAction("&Load...", this, [this] { guarded("mnuLoad_Click", [&] { mnuLoad_Click(); }); });
    mnuLoad->setObjectName("mnuLoad");
    file->addSeparator();
    mnuExit = file->addAction("E&xit", this, [this] { guarded("mnuExit_Click", [&] { mnuExit_Click(); }); });
    mnuExit->setObjectName("mnuExit");

    QMenu* window = menuBar()->addMenu("&Window");
    window->setObjectName("mnuWindow");
    mnuClose = window->addAction("&Close", this, [this] { guarded("mnuClose_Click", [&] { mnuClose_Click(); }); });
    mnuClose->setObjectName("mnuClose");
}

// ---- showing the model's state -------------------------------------------------------

void GraphWin::showCapture()
{
    const CaptureFaces& f = model_->capture().faces();
    shownCapture_ = f;
    paintFace(RepeatTrigcb, f.RepeatTrigcb);
    paintFace(NowTrigcb, f.NowTrigcb);
    paintFace(StopTracecb, f.StopTracecb);
    showText(StopTracecb, f.StopTracecbCaption);
    for (std::size_t i = 0; i < TraceDurationcb.size(); ++i) paintFace(TraceDurationcb[i], f.TraceDurationcb[i]);
    paintFace(DisplayClearcb, f.DisplayClearcb);
    showText(DisplayClearcb, f.DisplayClearcbCaption);
    paintFace(AutoScalecb, f.AutoScalecb);
    paintFace(DefaultScalecb, f.DefaultScalecb);
}

void GraphWin::showGains()
{
    const GainPanel& panel = model_->gains();
    const GainPanelFaces& f = panel.faces();
    for (const GainRow& r : kGainRows)
        (this->*r.label)->setCaption(QString::fromStdString(f.captions[static_cast<std::size_t>(r.gain)]));
    paintFace(SaveGaincb, f.SaveGaincb);
    for (std::size_t i = 0; i < MemStorecb.size(); ++i) {
        paintFace(MemStorecb[i], f.MemStorecb[i]);
        paintFace(MemReccb[i], f.MemReccb[i]);
    }
    for (std::size_t i = 0; i < MotorSelcb.size(); ++i) paintFace(MotorSelcb[i], f.MotorSelcb[i]);
    paintFace(Enablecb, f.Enablecb);

    const bool enabled = panel.gainMsgEnabled();
    if (Enablecb->isChecked() != enabled) {
        const QSignalBlocker block(Enablecb);
        Enablecb->setChecked(enabled);
    }
    if (LockVcb->isChecked() != panel.Locked()) {
        const QSignalBlocker block(LockVcb);
        LockVcb->setChecked(panel.Locked());
    }
    // The gain message runs exactly while "Enab" is ticked.
    if (enabled && !GainMsgTmr->isActive()) {
        // Tuning takes over the motor: a test drive in its direction would fight the gains.
        drive_.CancelTest();
        GainMsgTmr->start();
    }
    if (!enabled && GainMsgTmr->isActive()) GainMsgTmr->stop();
}

void GraphWin::showAll()
{
    showCapture();
    showGains();
}

// ---- operations of the main window ---------------------------------------------------

void GraphWin::PutSample(int motor, float rate, float error)
{
    if (guide_) guide_->putSample(motor, rate, error);
    model_->PutSample(motor, rate, error);
    // A sample changes the faces only when a single sweep ends: all the others, a hundred
    // a second, leave the buttons alone.
    if (model_->capture().faces() != shownCapture_) showCapture();
}

void GraphWin::SetEnable(bool flag)
{
    model_->gains().SetEnable(flag);
    showGains();
}

void GraphWin::PutCommsJustWentBad()
{
    if (guide_) guide_->linkLost();
    disconnectedBox_.post([this] { model_->PutCommsJustWentBad(config_.GetDataModified()); });
}

bool GraphWin::GetDataModified() const { return model_->GetDataModified(); }

bool GraphWin::GoForUpdate()
{
    const bool result = model_->gains().GoForUpdate();
    showGains();
    return result;
}

void GraphWin::LoadTuningFileOnInit(const std::string& path)
{
    model_->LoadTraceFile(path);
    showAll();
}

void GraphWin::SetSecondMotorVisible(bool visible) { MotorSelcb[1]->setVisible(visible); }

void GraphWin::SetInputValid(bool valid)
{
    if (shownInputValid_ == valid) return;
    shownInputValid_ = valid;
    paintFace(InputValidInd, valid ? colours::Green : colours::Red);
}

void GraphWin::unload()
{
    unloading_ = true;
    GainMsgTmr->stop();
    close();
}

// ---- handlers ------------------------------------------------------------------------

// The trigger, duration and scale buttons act on the capture; the gain panel's controls
// on the panel.
void GraphWin::RepeatTrigcb_Click()
{
    model_->capture().RepeatTrigcb_Click();
    showCapture();
}
void GraphWin::NowTrigcb_Click()
{
    model_->capture().NowTrigcb_Click();
    showCapture();
}
void GraphWin::StopTracecb_Click()
{
    model_->capture().StopTracecb_Click();
    showCapture();
}
void GraphWin::TraceDurationcb_Click(int index)
{
    model_->capture().TraceDurationcb_Click(index);
    showCapture();
}
void GraphWin::DisplayClearcb_Click()
{
    model_->capture().DisplayClearcb_Click();
    showCapture();
}
void GraphWin::AutoScalecb_Click()
{
    model_->capture().AutoScalecb_Click();
    showCapture();
}
void GraphWin::DefaultScalecb_Click()
{
    model_->capture().DefaultScalecb_Click();
    showCapture();
}
void GraphWin::Enablecb_Click()
{
    model_->gains().Enablecb_Click(Enablecb->isChecked());
    showGains();
}

void GraphWin::FullWidthcb_Click()
{
    const QScreen* s = screen();
    if (!s) return;
    const QRect area = s->availableGeometry();
    const int frameWidth = frameGeometry().width() - width();
    move(area.left(), y());
    resize(area.width() - frameWidth, height()); // the graph takes the new width
}

void GraphWin::ValueTb_Click(Gain which)
{
    model_->gains().ValueTb_Click(which);
    showGains();
}
void GraphWin::Inccb_Click(Gain which, int index)
{
    model_->gains().Inccb_Click(which, index);
    showGains();
}
void GraphWin::Deccb_Click(Gain which, int index)
{
    model_->gains().Deccb_Click(which, index);
    showGains();
}
void GraphWin::LockVcb_Click()
{
    model_->gains().LockVcb_Click(LockVcb->isChecked());
    showGains();
}
void GraphWin::MemStorecb_Click(int slot)
{
    model_->gains().MemStorecb_Click(slot);
    showGains();
}
void GraphWin::MemReccb_Click(int slot)
{
    model_->gains().MemReccb_Click(slot);
    showGains();
}
void GraphWin::Revertcb_Click()
{
    model_->gains().Revertcb_Click();
    showGains();
}
void GraphWin::SaveGaincb_Click()
{
    model_->gains().SaveGaincb_Click();
    showGains();
}
void GraphWin::MotorSelcb_Click(int index)
{
    model_->MotorSelcb_Click(index);
    showGains();
}
void GraphWin::SaveTracecb_Click() { model_->SaveTracecb_Click(); }

void GraphWin::LoadTracecb_Click()
{
    model_->LoadTracecb_Click();
    showAll();
}

void GraphWin::mnuExit_Click() { quit_.RemoteQueryUnload(); }

// Closing puts the window away and hands the user back to the main window; gains
// tuned but not carried into the configuration are offered for it first, so that
// the configuration the user writes next holds what was tuned.
void GraphWin::mnuClose_Click()
{
    hide();
    if (model_->GetDataModified() && GoForUpdate()) SaveGaincb_Click();
    windows_.bringForward(ProgramWindow::Main);
}

void GraphWin::GainMsgTmr_Timer()
{
    if (guide_ && guide_->gainMsgTick()) return; // the guide's candidate goes instead
    const GainSet& v = model_->gains().values();
    drive_.SendPID(v.P, v.I, v.IA, v.D, v.G, v.V1, v.V2, model_->gains().MotorIndex());
}

void GraphWin::Guidecb_Click()
{
    if (!guide_)
        guide_ = std::make_unique<GuidePanel>(
            model_->gains(), drive_, [this] { showGains(); }, this);
    guide_->show();
    guide_->raise();
}

void GraphWin::Form_KeyDown(int keyCode)
{
    model_->Form_KeyDown(keyCode);
    showCapture();
}

// ---- events --------------------------------------------------------------------------

// The space bar is STOP/START with any modifier held. Every key-down counts, the
// keyboard's repeats of a held key included, as a click on STOP would.
void GraphWin::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Space) {
        guarded("Form_KeyDown", [&] { Form_KeyDown(TraceCapture::kSpaceKey); });
        return;
    }
    QMainWindow::keyPressEvent(event);
}

bool GraphWin::eventFilter(QObject* watched, QEvent* event)
{
    // Seen before the focused control, which would otherwise take the space (Shift+Space
    // too) as a click on itself.
    if (event->type() == QEvent::KeyPress && static_cast<QKeyEvent*>(event)->key() == Qt::Key_Space) {
        guarded("Form_KeyDown", [&] { Form_KeyDown(TraceCapture::kSpaceKey); });
        return true;
    }
    return QMainWindow::eventFilter(watched, event);
}

void GraphWin::closeEvent(QCloseEvent* event)
{
    // The close box hides the window as Close does; the gain message and capture go on.
    closeUnlessUnloading(event, unloading_, [this] { guarded("mnuClose_Click", [&] { mnuClose_Click(); }); });
}

} // namespace kdx

#include "moc_graph_win_window.cpp"
