#pragma once
// The program's windows as one window asks for another: shown, hidden, raised; and the
// end of the program, which lets every window go. The application class answers.
namespace kdx {

enum class ProgramWindow { Main, Tuning, CommsLink, DataLogging, DebugDisplay, Wait, About };

class ProgramWindows {
public:
    virtual ~ProgramWindows() = default;
    // The wait window stands centred over the main window and probes for a module while
    // shown; the About window opens modal to the main window, a new one each time.
    virtual void showWindow(ProgramWindow w) = 0;
    // The wait window stops probing when hidden.
    virtual void hideWindow(ProgramWindow w) = 0;
    virtual void raiseWindow(ProgramWindow w) = 0;
    // Raises and activates the window if it is shown; a hidden one stays hidden.
    virtual void bringForward(ProgramWindow w) = 0;
    // Stops the log (closing its file), closes the port and lets every other window go.
    virtual void unloadAll() = 0;
};

// File, Exit of the main and tuning windows and the wait window's Quit: the one quit
// decision, which may ask the user and may end the program.
class QuitRequester {
public:
    virtual ~QuitRequester() = default;
    virtual void RemoteQueryUnload() = 0;
};

} // namespace kdx
