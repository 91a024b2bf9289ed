#include "sim/qt_sim_port.h"

namespace kdx {

QtSimPort::QtSimPort(SerialPort* real, uint64_t seed, Clock& clock, QObject* parent)
    : QObject(parent), real_(real), seed_(seed), clock_(clock)
{
    timer_.setInterval(10); // the module's telemetry comes at 100 Hz
    timer_.setTimerType(Qt::PreciseTimer);
    connect(&timer_, &QTimer::timeout, this, &QtSimPort::tick);
    if (real_) {
        real_->onBytes = [this](std::span<const uint8_t> b) {
            if (onBytes) onBytes(b);
        };
        real_->onLost = [this](const std::string& reason) {
            if (onLost) onLost(reason);
        };
    }
}

QtSimPort::~QtSimPort()
{
    if (real_) {
        real_->onBytes = nullptr;
        real_->onLost = nullptr;
    }
}

std::vector<PortIdentity> QtSimPort::describePorts()
{
    std::vector<PortIdentity> ports;
    if (real_) ports = real_->describePorts();
    if (ports.size() > 16) ports.resize(16);
    ports.push_back(PortIdentity::at(KdxName));
    ports.push_back(PortIdentity::at(QVaneName));
    return ports;
}

std::vector<std::string> QtSimPort::availablePorts()
{
    std::vector<std::string> names;
    for (PortIdentity& p : describePorts()) names.push_back(std::move(p.path));
    return names;
}

bool QtSimPort::present(const std::string& path)
{
    return path == KdxName || path == QVaneName || (real_ && real_->present(path));
}

bool QtSimPort::open(const std::string& name, std::string& error)
{
    close();
    if (name == KdxName || name == QVaneName) {
        sim::SimOptions options;
        options.qvane = name == QVaneName;
        options.seed = seed_;
        sim_ = std::make_unique<sim::Simulator>(options);
        simulated_ = 0;
        openedNs_ = clock_.nowNs();
        timer_.start();
        return true;
    }
    if (!real_) {
        error = "Device not found";
        return false;
    }
    return real_->open(name, error);
}

void QtSimPort::close()
{
    timer_.stop();
    sim_.reset();
    if (real_) real_->close();
}

bool QtSimPort::isOpen() const { return sim_ != nullptr || (real_ && real_->isOpen()); }

bool QtSimPort::write(std::span<const uint8_t> bytes, std::string& error)
{
    if (sim_) {
        tick(); // bring the module up to now before it hears the bytes
        sim_->consume(bytes);
        return true;
    }
    if (!real_) {
        error = "Port is not open";
        return false;
    }
    return real_->write(bytes, error);
}

void QtSimPort::applySettings()
{
    if (real_ && !sim_) real_->applySettings();
}

void QtSimPort::tick()
{
    if (!sim_) return;
    // Advance against the wall clock, not per tick, so a late timer never drifts the rate.
    const double now = static_cast<double>(clock_.nowNs() - openedNs_) * 1e-9;
    const double step = now - simulated_;
    if (step <= 0) return;
    simulated_ = now;
    out_.clear();
    sim_->advance(step > 1.0 ? 1.0 : step, out_);
    if (!out_.empty() && onBytes) onBytes(out_);
}

} // namespace kdx

#include "moc_qt_sim_port.cpp"
