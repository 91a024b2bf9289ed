#pragma once
// What the power-up wait window asks of the main window while it probes for a module:
// select a Q-Vane axis (which reads its configuration), and bring up the working windows.
namespace kdx {

class ConnectionSelect {
public:
    virtual ~ConnectionSelect() = default;
    // 0 Tilt, 1 Roll, 2 Pan.
    virtual void KDXAxisSelcb_Click(int index) = 0;
    virtual void SetDisplayVisible() = 0;
};

} // namespace kdx
