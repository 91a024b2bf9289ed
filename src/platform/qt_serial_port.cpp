#include "platform/qt_serial_port.h"

#include "platform/device_group.h"

#include <QFileInfo>
#include <QSerialPortInfo>

#include <algorithm>

namespace kdx {

namespace {
constexpr int MaxListedPorts = 18;
constexpr qint64 BufferSize = 5000;
} // namespace

QtSerialPort::QtSerialPort(QObject* parent) : QObject(parent)
{
    connect(&port_, &QSerialPort::readyRead, this, &QtSerialPort::onReadyRead);
    connect(&port_, &QSerialPort::errorOccurred, this, &QtSerialPort::onError);
}

QtSerialPort::~QtSerialPort() { port_.close(); }

void QtSerialPort::addExtraPort(const std::string& path)
{
    if (std::find(extra_.begin(), extra_.end(), path) == extra_.end()) extra_.push_back(path);
}

namespace {

PortIdentity identityOf(const QSerialPortInfo& info)
{
    PortIdentity id;
    id.path = info.systemLocation().toStdString();
    id.description = info.description().toStdString();
    id.serialNumber = info.serialNumber().toStdString();
    if (info.hasVendorIdentifier()) id.vendorId = info.vendorIdentifier();
    if (info.hasProductIdentifier()) id.productId = info.productIdentifier();
    return id;
}

} // namespace

std::vector<PortIdentity> QtSerialPort::describePorts()
{
    std::vector<PortIdentity> system;
    for (const QSerialPortInfo& info : QSerialPortInfo::availablePorts()) system.push_back(identityOf(info));
    std::sort(system.begin(), system.end(),
              [](const PortIdentity& a, const PortIdentity& b) { return a.path < b.path; });
    std::vector<PortIdentity> ports(system.begin(),
                                    system.begin() + std::min<std::ptrdiff_t>(MaxListedPorts, std::ssize(system)));
    for (const auto& e : extra_) {
        if (std::any_of(ports.begin(), ports.end(), [&](const PortIdentity& p) { return p.path == e; })) continue;
        PortIdentity id = PortIdentity::at(e);
        const std::string target = QFileInfo(QString::fromStdString(e)).canonicalFilePath().toStdString();
        const auto linked =
            std::find_if(system.begin(), system.end(), [&](const PortIdentity& p) { return p.path == target; });
        if (!target.empty() && linked != system.end()) {
            id = *linked;
            id.path = e;
        }
        ports.push_back(std::move(id));
    }
    return ports;
}

std::vector<std::string> QtSerialPort::availablePorts()
{
    std::vector<std::string> names;
    for (PortIdentity& p : describePorts()) names.push_back(std::move(p.path));
    return names;
}

bool QtSerialPort::present(const std::string& path) { return QFileInfo::exists(QString::fromStdString(path)); }

std::string QtSerialPort::describeOpenError(QSerialPort::SerialPortError error, const QString& text,
                                            const std::string& name)
{
    std::string reason = text.toStdString();
    if (error == QSerialPort::PermissionError) {
        reason = "Permission denied" + permissionHint(name);
    } else if (error == QSerialPort::DeviceNotFoundError) {
        reason = "Device not found";
    }
    return reason;
}

bool QtSerialPort::open(const std::string& name, std::string& error)
{
    if (port_.isOpen()) port_.close();
    port_.setPortName(QString::fromStdString(name));
    if (!port_.open(QIODevice::ReadWrite)) {
        error = describeOpenError(port_.error(), port_.errorString(), name);
        port_.clearError();
        return false;
    }
    applySettings();
    port_.setReadBufferSize(0); // unbounded: the receiver drains it at every readyRead
    reportingLoss_ = false;
    return true;
}

void QtSerialPort::applySettings()
{
    if (!port_.isOpen()) return;
    port_.setBaudRate(QSerialPort::Baud115200);
    port_.setDataBits(QSerialPort::Data8);
    port_.setParity(QSerialPort::NoParity);
    port_.setStopBits(QSerialPort::OneStop);
    port_.setFlowControl(QSerialPort::NoFlowControl);
    (void)BufferSize;
}

void QtSerialPort::close()
{
    if (port_.isOpen()) port_.close();
}

bool QtSerialPort::isOpen() const { return port_.isOpen(); }

bool QtSerialPort::write(std::span<const uint8_t> bytes, std::string& error)
{
    if (!port_.isOpen()) {
        error = "Port is not open";
        return false;
    }
    const qint64 n = port_.write(reinterpret_cast<const char*>(bytes.data()), static_cast<qint64>(bytes.size()));
    if (n != static_cast<qint64>(bytes.size())) {
        error = port_.errorString().toStdString();
        return false;
    }
    return true;
}

void QtSerialPort::onReadyRead()
{
    const QByteArray data = port_.readAll();
    if (!data.isEmpty() && onBytes)
        onBytes(std::span<const uint8_t>(reinterpret_cast<const uint8_t*>(data.constData()),
                                         static_cast<std::size_t>(data.size())));
}

void QtSerialPort::onError(QSerialPort::SerialPortError error)
{
    // Only failures of an open port are a loss; open errors are reported by open().
    if (error == QSerialPort::NoError || !port_.isOpen()) return;
    if (error != QSerialPort::ResourceError && error != QSerialPort::ReadError && error != QSerialPort::WriteError &&
        error != QSerialPort::UnknownError)
        return;
    if (reportingLoss_) return;
    reportingLoss_ = true;
    const std::string reason = port_.errorString().toStdString();
    port_.clearError();
    port_.close(); // stops the notifier, so a hung-up line cannot spin the event loop
    if (onLost) onLost(reason);
}

} // namespace kdx

#include "moc_qt_serial_port.cpp"
