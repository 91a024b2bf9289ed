#pragma once
// The serial-port seam with the simulated module behind it, so the program runs its
// whole job with no hardware. Wraps the machine's real ports too: the Comms Link window
// lists "Simulated KDX" and "Simulated Q-Vane" beside them and selects them like ports.
#include "platform/serial_port.h"
#include "sim/simulator.h"

#include <QElapsedTimer>
#include <QObject>
#include <QTimer>

#include <memory>
#include <string>
#include <vector>

namespace kdx {

class QtSimPort : public QObject, public SerialPort {
    Q_OBJECT
public:
    static constexpr const char* KdxName = "Simulated KDX";
    static constexpr const char* QVaneName = "Simulated Q-Vane";

    // `real` (may be null) serves every name that is not a simulated one.
    explicit QtSimPort(SerialPort* real, uint64_t seed = 1, QObject* parent = nullptr);
    ~QtSimPort() override;

    std::vector<std::string> availablePorts() override;
    std::vector<PortIdentity> describePorts() override;
    bool present(const std::string& path) override;
    bool open(const std::string& name, std::string& error) override;
    void close() override;
    bool isOpen() const override;
    bool write(std::span<const uint8_t> bytes, std::string& error) override;
    void applySettings() override;

    // Advances the simulated module to the wall clock and delivers what it sent.
    void tick();
    sim::Simulator* simulator() { return sim_.get(); }

private:
    SerialPort* real_;
    uint64_t seed_;
    std::unique_ptr<sim::Simulator> sim_;
    QTimer timer_;
    QElapsedTimer clock_;
    double simulated_ = 0; // seconds already advanced
    std::vector<uint8_t> out_;
};

} // namespace kdx
