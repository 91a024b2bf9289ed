#include "mainwindow/change_markers.h"

#include "widgets/text.h"

#include <QBoxLayout>
#include <QEvent>
#include <QCheckBox>
#include <QGridLayout>
#include <QLabel>

namespace kdx {

namespace {

const QString kMark = QStringLiteral("\u25CF");

// The layout at any depth below `root` that holds `w` itself, and w's index in it.
QLayout* holderOf(QLayout* root, const QWidget* w, int& index)
{
    for (int i = 0; i < root->count(); ++i) {
        QLayoutItem* item = root->itemAt(i);
        if (item->widget() == w) {
            index = i;
            return root;
        }
        if (item->layout())
            if (QLayout* inner = holderOf(item->layout(), w, index)) return inner;
    }
    return nullptr;
}

QLayout* holderOf(const QWidget* w, int& index)
{
    const QWidget* parent = w->parentWidget();
    return parent && parent->layout() ? holderOf(parent->layout(), w, index) : nullptr;
}

// Keeps a mark in the gap right of its control, outside the layout, so the marks take no
// room: the window keeps the width it has without them.
class MarkFollower : public QObject {
public:
    MarkFollower(QWidget* control, QLabel* mark) : QObject(mark), control_(control), mark_(mark)
    {
        control->installEventFilter(this);
        place();
    }

protected:
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (watched == control_ && (event->type() == QEvent::Move || event->type() == QEvent::Resize)) place();
        return false;
    }

private:
    void place()
    {
        const QRect r = control_->geometry();
        mark_->setGeometry(r.right() + 1, r.top(), mark_->width(), r.height());
        mark_->raise();
    }

    QWidget* control_;
    QLabel* mark_;
};

// The widget just left of `control` in its layout, or none.
QWidget* leftOf(const QWidget* control)
{
    int index = -1;
    QLayout* holder = holderOf(control, index);
    QLayoutItem* item = nullptr;
    if (auto* grid = qobject_cast<QGridLayout*>(holder)) {
        int row = 0, column = 0, rows = 0, columns = 0;
        grid->getItemPosition(index, &row, &column, &rows, &columns);
        item = column > 0 ? grid->itemAtPosition(row, column - 1) : nullptr;
    } else if (holder && index > 0) {
        item = holder->itemAt(index - 1);
    }
    return item ? item->widget() : nullptr;
}

} // namespace

ChangeMarkers::ChangeMarkers(ValueControl control) : control_(std::move(control))
{
    forEachShownParam([&](const ParamField& field, int m) {
        QWidget* value = control_(field, m);
        if (!value) return;
        auto* mark = new QLabel(value->parentWidget());
        mark->setObjectName(value->objectName() + "Changed");
        mark->setAlignment(Qt::AlignCenter);
        // A slot of fixed width, so a mark coming or going moves nothing.
        mark->setFixedWidth(mark->fontMetrics().horizontalAdvance(kMark) + 2);
        new MarkFollower(value, mark);
        marks_[{&field, m}] = mark;
    });
}

void ChangeMarkers::takeReport(const DriverConfig& config)
{
    baseline_.take(config.image());
    show(config);
}

void ChangeMarkers::show(const DriverConfig& config)
{
    std::map<std::pair<const ParamField*, int>, const ChangedParam*> changed;
    const std::vector<ChangedParam> changes = baseline_.changes(config);
    for (const ChangedParam& c : changes) changed[{c.field, c.motor}] = &c;
    for (const auto& [key, mark] : marks_) {
        const auto it = changed.find(key);
        const QString text = it == changed.end() ? QString() : kMark;
        const QString tip = it == changed.end()
                                ? QString()
                                : "Changed: the module last reported " + QString::fromStdString(it->second->reported);
        showText(mark, text);
        if (mark->toolTip() != tip) {
            mark->setToolTip(tip);
            mark->setAccessibleName(tip);
        }
    }
}

QLabel* ChangeMarkers::mark(const ParamField& field, int motor) const
{
    const auto it = marks_.find({&field, motor});
    return it == marks_.end() ? nullptr : it->second;
}

QString ChangeMarkers::shownName(const ParamField& field, int motor) const
{
    const QWidget* control = control_(field, motor);
    if (const auto* box = qobject_cast<const QCheckBox*>(control)) return box->text().remove('&');
    if (const auto* caption = qobject_cast<const QLabel*>(control ? leftOf(control) : nullptr))
        return caption->text().remove('&');
    return QString::fromUtf8(field.meaning.data(), static_cast<int>(field.meaning.size()));
}

} // namespace kdx
