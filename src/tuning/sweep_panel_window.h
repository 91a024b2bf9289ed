#pragma once
// The frame under the tuning graph that puts numbers on the latest sweep: its error,
// rate, dominant frequency and step response, a pinned reference sweep's beside them and
// the change between the two. It pins and unpins the reference, and exports the latest
// sweep as CSV and the graph as a PNG picture at twice its size. The numbers come from
// SweepReview; this class only shows them and runs the two save dialogs.
#include "platform/dialogs.h"

#include <QGroupBox>
#include <QImage>

#include <array>
#include <vector>

class QAction;
class QLabel;
class QMenu;
class QPushButton;

namespace kdx {

class SweepReview;

class SweepPanel : public QGroupBox {
    Q_OBJECT
public:
    static constexpr int kMetricCount = 8;

    // Both are referenced and must outlive the panel.
    SweepPanel(SweepReview& review, Dialogs& dialogs, QWidget* parent = nullptr);

    // The export and pin entries, inserted into a menu before `before`.
    void addMenuEntries(QMenu* menu, QAction* before);
    // What the PNG export shows: the parts (the picture, its value labels, its legend),
    // each placed as it stands in `frame`, over the frame's background.
    void setGraphParts(QWidget* frame, std::vector<QWidget*> parts);
    // The graph's parts at `scale` times their size on the screen, labels included.
    QImage graphPicture(qreal scale) const;

    void Pincb_Click();
    void mnuExportCsv_Click();
    void mnuExportPng_Click();

    QPushButton* Pincb = nullptr;
    QAction* mnuPin = nullptr;
    QAction* mnuExportCsv = nullptr;
    QAction* mnuExportPng = nullptr;
    std::array<QLabel*, kMetricCount> Currentlb{}, Referencelb{}, Changelb{};

private:
    void refresh();
    // Saves `bytes` atomically at a path the user picks; reports a failure in a box.
    void saveAs(const std::string& filter, const std::string& ext, const std::string& bytes);

    SweepReview& review_;
    Dialogs& dialogs_;
    QWidget* frame_ = nullptr;
    std::vector<QWidget*> parts_;
};

} // namespace kdx
