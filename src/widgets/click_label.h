#pragma once
// A value label that reacts to a click, as the system's "tb" controls do.
#include <QLabel>

namespace kdx {

class ClickLabel : public QLabel {
    Q_OBJECT
public:
    explicit ClickLabel(QWidget* parent = nullptr);
    // Sets the text only when it changes, so an unchanged value costs no repaint.
    void setCaption(const QString& text)
    {
        if (text != this->text()) setText(text);
    }
    void setBackColour(uint32_t bgr);

signals:
    void clicked();

protected:
    void mouseReleaseEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
};

} // namespace kdx
