/* Asks the shown X window whose title starts with TITLE to close, as its close box does
 * (WM_DELETE_WINDOW), and prints the moment it asked, in seconds since the epoch.
 *   close_window TITLE */
#include <X11/Xatom.h>
#include <X11/Xlib.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <time.h>

static Window find(Display* d, Window w, const char* title)
{
    char* name = NULL;
    XWindowAttributes a;
    const int shown = XGetWindowAttributes(d, w, &a) && a.map_state == IsViewable;
    if (shown && XFetchName(d, w, &name) && name) {
        const int match = strncmp(name, title, strlen(title)) == 0;
        XFree(name);
        if (match) return w;
    }
    Window root, parent, *children = NULL;
    unsigned n = 0;
    Window found = 0;
    if (XQueryTree(d, w, &root, &parent, &children, &n)) {
        for (unsigned i = 0; i < n && !found; ++i) found = find(d, children[i], title);
        if (children) XFree(children);
    }
    return found;
}

int main(int argc, char** argv)
{
    if (argc != 2) return 2;
    Display* d = XOpenDisplay(NULL);
    if (!d) return 1;
    const Window w = find(d, DefaultRootWindow(d), argv[1]);
    if (!w) {
        fprintf(stderr, "close_window: no window titled %s\n", argv[1]);
        return 1;
    }
    XEvent e;
    memset(&e, 0, sizeof e);
    e.xclient.type = ClientMessage;
    e.xclient.window = w;
    e.xclient.message_type = XInternAtom(d, "WM_PROTOCOLS", False);
    e.xclient.format = 32;
    e.xclient.data.l[0] = (long)XInternAtom(d, "WM_DELETE_WINDOW", False);
    e.xclient.data.l[1] = CurrentTime;
    struct timespec t;
    clock_gettime(CLOCK_REALTIME, &t);
    XSendEvent(d, w, False, NoEventMask, &e);
    XFlush(d);
    printf("%ld.%09ld\n", (long)t.tv_sec, t.tv_nsec);
    XCloseDisplay(d);
    return 0;
}
