#pragma once
// The serial port on Qt SerialPort. Bytes arrive through readyRead on the GUI thread;
// a port that fails underneath (adapter pulled, far end of a pseudo-terminal closed) is
// closed at once and reported once through onLost.
#include "platform/serial_port.h"

#include <QObject>
#include <QSerialPort>

#include <string>
#include <vector>

namespace kdx {

class QtSerialPort : public QObject, public SerialPort {
    Q_OBJECT
public:
    explicit QtSerialPort(QObject* parent = nullptr);
    ~QtSerialPort() override;

    // Paths named on the command line (--port) are listed after the system's ports.
    void addExtraPort(const std::string& path);

    std::vector<std::string> availablePorts() override;
    // The system's ports with their USB description, serial number and ids; a path
    // named with addExtraPort that links to one of them shares its identity.
    std::vector<PortIdentity> describePorts() override;
    bool present(const std::string& path) override;
    bool open(const std::string& name, std::string& error) override;
    void close() override;
    bool isOpen() const override;
    bool write(std::span<const uint8_t> bytes, std::string& error) override;
    void applySettings() override;

    // What an open failure says to the user: the reason, and on Linux the dialout group
    // when permission was refused.
    static std::string describeOpenError(QSerialPort::SerialPortError error, const QString& text);

private:
    void onReadyRead();
    void onError(QSerialPort::SerialPortError error);

    QSerialPort port_;
    std::vector<std::string> extra_;
    bool reportingLoss_ = false;
};

} // namespace kdx
