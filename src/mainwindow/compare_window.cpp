#include "mainwindow/compare_window.h"

#include "config/config_file.h"
#include "config/memory_layout.h"
#include "platform/qt_guard.h"
#include "widgets/text.h"

#include <QComboBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QTableWidget>
#include <QVBoxLayout>

namespace kdx {

namespace {

// "Byte15" as diffConfigs names a byte that no parameter shows.
constexpr std::string_view kBytePrefix = "Byte";

} // namespace

CompareWindow::CompareWindow(std::string path, const ConfigSnapshot& file, ScreenConfig screen, ShownName name,
                             LoadFile load, QWidget* parent)
    : QDialog(parent),
      path_(std::move(path)),
      file_(file),
      screen_(std::move(screen)),
      name_(std::move(name)),
      load_(std::move(load))
{
    setObjectName("CompareWindow");
    const auto slash = path_.find_last_of("/\\");
    setWindowTitle("Compare with File - " + qs(slash == std::string::npos ? path_ : path_.substr(slash + 1)));
    auto* layout = new QVBoxLayout(this);

    Filelb = new QLabel("The configuration on screen against " + qs(path_) + ". Nothing is sent to the module.", this);
    Filelb->setObjectName("Filelb");
    Filelb->setWordWrap(true);
    layout->addWidget(Filelb);

    Motorcb = new QComboBox(this);
    Motorcb->setObjectName("Motorcb");
    Motorcb->setToolTip("The file holds two motors; the screen shows one. Compare it with this one.");
    for (int m = 0; m < 2; ++m) {
        const int axis = file_.image[static_cast<std::size_t>(layout::MotorBlockSize * m + layout::AxisFlags)] & 3;
        Motorcb->addItem(QString("Motor %1 (%2)").arg(m + 1).arg(qs(AxisName(axis))));
    }
    auto* motorRow = new QHBoxLayout;
    auto* motorCaption = new QLabel("File's motor", this);
    motorCaption->setBuddy(Motorcb);
    motorRow->addWidget(motorCaption);
    motorRow->addWidget(Motorcb);
    motorRow->addStretch(1);
    layout->addLayout(motorRow);
    chooseMotor_ = file_.twoAxis && !screen_().twoAxis;
    motorCaption->setVisible(chooseMotor_);
    Motorcb->setVisible(chooseMotor_);
    connect(Motorcb, &QComboBox::currentIndexChanged, this,
            [this] { guarded("Motorcb_Click", [&] { Motorcb_Click(); }); });

    Summarylb = new QLabel(this);
    Summarylb->setObjectName("Summarylb");
    layout->addWidget(Summarylb);

    Differencesgr = new QTableWidget(0, 4, this);
    Differencesgr->setObjectName("Differencesgr");
    Differencesgr->setHorizontalHeaderLabels({"Parameter", "Motor", "On screen", "In file"});
    Differencesgr->setEditTriggers(QAbstractItemView::NoEditTriggers);
    Differencesgr->setSelectionBehavior(QAbstractItemView::SelectRows);
    Differencesgr->verticalHeader()->setVisible(false);
    Differencesgr->horizontalHeader()->setSectionResizeMode(QHeaderView::ResizeToContents);
    Differencesgr->horizontalHeader()->setStretchLastSection(true);
    layout->addWidget(Differencesgr, 1);

    auto* buttons = new QHBoxLayout;
    Loadcb = new QPushButton("Load these values", this);
    Loadcb->setObjectName("Loadcb");
    Loadcb->setToolTip("Loads the file as File, Load does; Write then sends it to the module");
    Closecb = new QPushButton("Close", this);
    Closecb->setObjectName("Closecb");
    Closecb->setDefault(true);
    connect(Loadcb, &QPushButton::clicked, this, [this] { guarded("Loadcb_Click", [&] { Loadcb_Click(); }); });
    connect(Closecb, &QPushButton::clicked, this, [this] { guarded("Closecb_Click", [&] { Closecb_Click(); }); });
    buttons->addStretch(1);
    buttons->addWidget(Loadcb);
    buttons->addWidget(Closecb);
    layout->addLayout(buttons);

    compare();
    resize(520, 360);
}

void CompareWindow::Motorcb_Click() { compare(); }

void CompareWindow::Loadcb_Click()
{
    if (load_(path_)) accept();
}

void CompareWindow::Closecb_Click() { reject(); }

void CompareWindow::compare()
{
    const ConfigSnapshot screen = screen_();
    const int motor = chooseMotor_ ? Motorcb->currentIndex() : 0;
    const std::vector<ParamDifference> differences = diffConfigs(screen, file_, motor);
    Differencesgr->setRowCount(static_cast<int>(differences.size()));
    int row = 0;
    for (const ParamDifference& d : differences) {
        const QString cells[4] = {rowName(d), QString::number(d.motor + 1), qs(d.a), qs(d.b)};
        for (int column = 0; column < 4; ++column)
            Differencesgr->setItem(row, column, new QTableWidgetItem(cells[column]));
        ++row;
    }
    Summarylb->setText(differences.empty()       ? QString("No differences.")
                       : differences.size() == 1 ? QString("1 difference.")
                                                 : QString("%1 differences.").arg(differences.size()));
}

QString CompareWindow::rowName(const ParamDifference& d) const
{
    if (d.name == kDebugIdField.name) return name_(kDebugIdField, 0);
    if (const ParamField* field = findParamField(d.name)) return name_(*field, d.motor);
    if (d.name.starts_with(kBytePrefix)) return "Byte " + qs(d.name.substr(kBytePrefix.size())) + " (unnamed)";
    return qs(d.name);
}

} // namespace kdx

#include "moc_compare_window.cpp"
