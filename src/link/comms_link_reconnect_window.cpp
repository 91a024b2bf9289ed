// The Comms Link window's port details and its reconnect watch: a port that vanishes
// (an adapter pulled out, the far end of a line gone) is looked for four times a second
// and reopened when it is back, at its path or, for a USB adapter, wherever the system
// lists it now; and the link's state for whoever shows it.
#include "link/comms_link_window.h"

#include "link/port_return.h"

#include <QLabel>
#include <QRadioButton>
#include <QTimer>

#include <algorithm>
#include <cstdio>

namespace kdx {

namespace {

std::string usbIds(const PortIdentity& id)
{
    char text[16];
    std::snprintf(text, sizeof text, "%04x:%04x", id.vendorId, id.productId);
    return text;
}

// The line beside a port's button: its path, unless that is the caption already (the
// simulated ports), then what the adapter says of itself.
std::string portLine(const PortIdentity& id)
{
    std::string line = id.path.find('/') == std::string::npos ? std::string() : id.path;
    const auto add = [&](const std::string& part) {
        if (part.empty()) return;
        if (!line.empty()) line += ", ";
        line += part;
    };
    add(id.description);
    if (!id.serialNumber.empty()) add("serial number " + id.serialNumber);
    return line;
}

std::string portTip(const PortIdentity& id)
{
    std::string tip = id.path;
    if (!id.description.empty()) tip += "\n" + id.description;
    if (!id.serialNumber.empty()) tip += "\nSerial number: " + id.serialNumber;
    if (id.hasUsbIds()) tip += "\nUSB vendor:product " + usbIds(id);
    return tip;
}

} // namespace

PortIdentity CommsLink::identityOf(const std::string& path)
{
    const auto it =
        std::find_if(identities_.begin(), identities_.end(), [&](const PortIdentity& p) { return p.path == path; });
    return it != identities_.end() ? *it : PortIdentity::at(path);
}

void CommsLink::showPortDetails(int port, const PortIdentity& id)
{
    const auto i = static_cast<std::size_t>(port - 1);
    CommsPortob[i]->setToolTip(QString::fromStdString(portTip(id)));
    CommsPortlb[i]->setText(QString::fromStdString(portLine(id)));
}

void CommsLink::startWatch()
{
    watching_ = true;
    writeFailed_ = false;
    lostAt_ = std::chrono::system_clock::now();
    reconnectTimer->start();
    updateLinkState();
}

void CommsLink::stopWatch()
{
    watching_ = false;
    reconnectTimer->stop();
}

void CommsLink::reconnectTick()
{
    if (!watching_ || PortOpen) {
        stopWatch();
        return;
    }
    const PortIdentity lost = openIdentity_;
    const bool there = port_.present(lost.path);
    if (!there && !lost.recognisable()) return; // nothing else to look at: the cheap case
    // Listing the system's ports costs more than a look at one path; it is needed only
    // to know an adapter again.
    const std::vector<PortIdentity> listed = lost.recognisable() ? port_.describePorts() : std::vector<PortIdentity>{};
    const std::optional<std::string> path = returnedPath(lost, listed, there);
    if (!path) return;
    std::string error;
    if (!port_.open(*path, error)) return; // back but not ready yet (its permissions still being set): next tick
    stopWatch();
    if (*path != lost.path) { // the same adapter at a new path: its button shows it there
        std::erase_if(identities_, [&](const PortIdentity& p) { return p.path == *path; });
        for (const PortIdentity& p : listed)
            if (p.path == *path) identities_.push_back(p);
    }
    portOpened(listPort(*path));
}

void CommsLink::updateLinkState()
{
    LinkStatus s;
    if (PortOpen) {
        // Telemetry heard on this port and then missed by the watchdog is a lost link.
        const bool heard = rx_.goodMessages > goodAtOpen_;
        s.state = rx_.GetCommsGood() ? LinkState::Live : heard ? LinkState::Lost : LinkState::Waiting;
        s.port = portName(CurrentPort);
        s.portNumber = CurrentPort;
        if (s.state == LinkState::Lost) s.lostAt = lostAt_;
    } else if (watching_ || writeFailed_) {
        s.state = watching_ ? LinkState::Reconnecting : LinkState::Lost;
        s.port = watching_ ? openIdentity_.path : portName(CurrentPort);
        s.portNumber = watching_ ? 0 : CurrentPort;
        s.lostAt = lostAt_;
    }
    if (PlaybackActive && !trim_.copying()) {
        s.state = LinkState::Playing;
        const std::string file = inputFilename();
        s.playbackFile = file.substr(file.find_last_of("/\\") + 1);
        for (std::size_t i = 0; i < Rateob.size(); ++i)
            if (Rateob[i]->isChecked()) s.playbackRate = playback::Rates[i].caption;
    }
    if (s == linkStatus_) return;
    linkStatus_ = s;
    if (linkListener_) linkListener_(linkStatus_);
}

void CommsLink::keepInViewWhilePlaying()
{
    if (!PlaybackActive || trim_.copying()) return;
    show();
    raise();
    // The windows just revealed are put up by the window system after this handler
    // returns; raised once more then, this one stays on top of them.
    QTimer::singleShot(0, this, [this] {
        if (isVisible()) raise();
    });
}

} // namespace kdx
