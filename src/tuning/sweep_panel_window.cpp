#include "tuning/sweep_panel_window.h"

#include "core/atomic_file.h"
#include "platform/qt_guard.h"
#include "tuning/sweep_export.h"
#include "tuning/sweep_review.h"
#include "widgets/text.h"

#include <QAction>
#include <QBuffer>
#include <QGridLayout>
#include <QLabel>
#include <QMenu>
#include <QPainter>
#include <QPushButton>

namespace kdx {

namespace {

constexpr const char* kPinCaption = "Pin as reference";
constexpr const char* kUnpinCaption = "Unpin";
constexpr int kPictureScale = 2;

} // namespace

SweepPanel::SweepPanel(SweepReview& review, Dialogs& dialogs, QWidget* parent)
    : QGroupBox("Sweep", parent), review_(review), dialogs_(dialogs)
{
    setObjectName("SweepPanelfr");
    auto* grid = new QGridLayout(this);
    grid->setVerticalSpacing(1);
    grid->setHorizontalSpacing(10);
    const char* rowTitles[] = {"Latest", "Reference", "Change"};
    for (int r = 0; r < 3; ++r) grid->addWidget(new QLabel(rowTitles[r], this), r + 1, 0);
    const std::vector<MetricRow> rows = review_.rows();
    const std::array<std::pair<std::array<QLabel*, kMetricCount>*, const char*>, 3> cells = {
        {{&Currentlb, "Currentlb"}, {&Referencelb, "Referencelb"}, {&Changelb, "Changelb"}}};
    for (int i = 0; i < kMetricCount; ++i) {
        const auto k = static_cast<std::size_t>(i);
        grid->addWidget(
            new QLabel(QString::fromUtf8(rows[k].caption.data(), static_cast<int>(rows[k].caption.size())), this), 0,
            i + 1, Qt::AlignRight);
        for (std::size_t r = 0; r < cells.size(); ++r) {
            auto* l = new QLabel(this);
            l->setObjectName(QString("%1%2").arg(cells[r].second).arg(i));
            l->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
            (*cells[r].first)[k] = l;
            grid->addWidget(l, static_cast<int>(r) + 1, i + 1);
        }
    }
    Pincb = new QPushButton(kPinCaption, this);
    Pincb->setObjectName("Pincb");
    Pincb->setToolTip("Keeps the latest sweep, drawn faintly behind the live traces, to compare new sweeps with");
    connect(Pincb, &QPushButton::clicked, this, [this] { guarded("Pincb_Click", [&] { Pincb_Click(); }); });
    grid->addWidget(Pincb, 1, kMetricCount + 1, 2, 1);
    grid->setColumnStretch(kMetricCount + 2, 1);

    mnuPin = new QAction(kPinCaption, this);
    mnuPin->setObjectName("mnuPin");
    connect(mnuPin, &QAction::triggered, this, [this] { guarded("Pincb_Click", [&] { Pincb_Click(); }); });
    mnuExportCsv = new QAction("Export Sweep as &CSV...", this);
    mnuExportCsv->setObjectName("mnuExportCsv");
    connect(mnuExportCsv, &QAction::triggered, this,
            [this] { guarded("mnuExportCsv_Click", [&] { mnuExportCsv_Click(); }); });
    mnuExportPng = new QAction("Export Graph as &PNG...", this);
    mnuExportPng->setObjectName("mnuExportPng");
    connect(mnuExportPng, &QAction::triggered, this,
            [this] { guarded("mnuExportPng_Click", [&] { mnuExportPng_Click(); }); });

    review_.setOnChanged([this] { refresh(); });
    refresh();
}

void SweepPanel::addMenuEntries(QMenu* menu, QAction* before)
{
    menu->insertActions(before, {mnuExportCsv, mnuExportPng});
    menu->insertSeparator(before);
    menu->insertAction(before, mnuPin);
    menu->insertSeparator(before);
}

void SweepPanel::setGraphParts(QWidget* frame, std::vector<QWidget*> parts)
{
    frame_ = frame;
    parts_ = std::move(parts);
    refresh();
}

void SweepPanel::refresh()
{
    const std::vector<MetricRow> rows = review_.rows();
    for (std::size_t i = 0; i < rows.size() && i < Currentlb.size(); ++i) {
        showText(Currentlb[i], rows[i].current);
        showText(Referencelb[i], rows[i].reference);
        showText(Changelb[i], rows[i].change);
        const QString tip = QString::fromStdString(rows[i].summary);
        if (Changelb[i]->toolTip() != tip) Changelb[i]->setToolTip(tip);
    }
    const bool pinned = review_.reference().has_value();
    const QString caption = pinned ? kUnpinCaption : kPinCaption;
    showText(Pincb, caption);
    mnuPin->setText(caption);
    const bool hasSweep = review_.current().has_value();
    Pincb->setEnabled(pinned || hasSweep);
    mnuPin->setEnabled(pinned || hasSweep);
    mnuExportCsv->setEnabled(hasSweep);
    mnuExportPng->setEnabled(frame_ != nullptr && !parts_.empty());
}

void SweepPanel::Pincb_Click()
{
    if (review_.reference()) review_.Unpin();
    else review_.Pin();
}

void SweepPanel::saveAs(const std::string& filter, const std::string& ext, const std::string& bytes)
{
    FileDialogRequest request;
    request.filter = filter;
    request.defaultExt = ext;
    const std::optional<std::string> path = dialogs_.SaveFile(request);
    if (!path || path->empty()) return;
    std::string error;
    const auto* data = reinterpret_cast<const uint8_t*>(bytes.data());
    if (!saveFileAtomically(*path, std::span<const uint8_t>(data, bytes.size()), error))
        dialogs_.MsgBox("Error exporting to " + *path + ": " + error, box::Critical, "Export");
}

void SweepPanel::mnuExportCsv_Click()
{
    if (!review_.current()) return;
    saveAs(std::string(sweep_export::CsvFilter), "csv", review_.csvText());
}

void SweepPanel::mnuExportPng_Click()
{
    QByteArray png;
    QBuffer buffer(&png);
    buffer.open(QIODevice::WriteOnly);
    graphPicture(kPictureScale).save(&buffer, "PNG");
    saveAs(std::string(sweep_export::PngFilter), "png", png.toStdString());
}

QImage SweepPanel::graphPicture(qreal scale) const
{
    if (!frame_) return {};
    QRect area;
    for (QWidget* w : parts_) area |= QRect(w->mapTo(frame_, QPoint(0, 0)), w->size());
    if (area.isEmpty()) return {};
    QImage image(area.size() * scale, QImage::Format_RGB32);
    image.setDevicePixelRatio(scale);
    image.fill(frame_->palette().color(QPalette::Window));
    QPainter p(&image);
    for (QWidget* w : parts_) w->render(&p, w->mapTo(frame_, QPoint(0, 0)) - area.topLeft());
    return image;
}

} // namespace kdx

#include "moc_sweep_panel_window.cpp"
