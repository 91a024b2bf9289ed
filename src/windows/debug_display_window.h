#pragma once
// The debug display: the seven debug bytes of each direct cyclic message, in decimal
// and hex under their titles, with a check box that adds them to the telemetry log.
#include "platform/clock.h"
#include "telemetry/debug_channel.h"

#include <QWidget>

#include <array>
#include <memory>
#include <cstdint>
#include <string>

class QCheckBox;
class QLabel;

namespace kdx {

class DebugDisplay : public QWidget, public DebugChannel {
    Q_OBJECT
public:
    // `clock` paces the labels.
    explicit DebugDisplay(Clock& clock = systemClock(), QWidget* parent = nullptr);
    ~DebugDisplay() override;

    void Form_Load();
    // Bytes 38 .. 44 of a direct cyclic message, in order.
    void PutDebugData(const std::array<uint8_t, 7>& bytes) override;
    // Whether the user asked for the debug bytes in the telemetry log.
    bool GetLogDebugData() const override;
    // The log's extra header columns, comma separated, no leading comma.
    std::string GetDebugTitles() const override;
    // The current values as log columns, same count as the titles, no leading comma.
    std::string GetDebugStrToLog() const override;
    // Greys the values while the link is lost; the next debug bytes show them fresh.
    void setStale(bool stale);
    // Lets the window close for real (the program is ending); until then closing hides it.
    void unload();

    QCheckBox* LogDebugcb = nullptr;
    std::array<QLabel*, 7> DebugTitlelb{};
    std::array<QLabel*, 7> DebugValuelb{};

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    void showEvent(QShowEvent* event) override;
    // Copies the stored bytes into the value labels whose text changed; only while shown.
    void refreshLabels();

    struct State;
    std::unique_ptr<State> state_;
};

} // namespace kdx
