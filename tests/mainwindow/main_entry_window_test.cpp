#include "fakes/fake_serial_port.h"
#include "fakes/scripted_dialogs.h"
#include "link/comms_link_window.h"
#include "mainwindow/main_entry.h"

#include <QLabel>
#include <gtest/gtest.h>

using namespace kdx;
using namespace kdx::test;

TEST(MainEntryWindow, CommsQualityReadsFiftyMessagesPerTickAsFull)
{
    FakeSerialPort port;
    ScriptedDialogs dialogs;
    Workspace ws;
    CommsLink comms(port, dialogs);
    ws.comms = &comms;
    MainEntry main(ws);
    struct Case { int good; const char* shown; };
    for (const Case& c : {Case{49, "100%"}, {48, "96%"}, {60, "100%"}, {50, "100%"}, {25, "50%"}, {0, "0%"}, {51, "100%"}}) {
        for (int i = 0; i < c.good; ++i) main.PutMessageReceived(true);
        main.CommsQualityTmr_Timer();
        EXPECT_EQ(main.CommsQualitylb->text().toStdString(), c.shown) << c.good;
        EXPECT_EQ(main.GoodMsgCount, 0);
    }
    main.BadMsgCount = 32761;
    main.PutMessageReceived(false);
    EXPECT_EQ(main.BadMsgCount, 0);
}

TEST(MainEntryWindow, SendsThroughTheLink)
{
    FakeSerialPort port;
    ScriptedDialogs dialogs;
    Workspace ws;
    CommsLink comms(port, dialogs);
    ws.comms = &comms;
    MainEntry main(ws);
    comms.Form_Load();
    main.OutMsg[0] = 3;
    main.OutMsg[1] = 112;
    main.OutMsg[2] = 115;
    main.SendMessage();
    EXPECT_EQ(port.written, (std::vector<uint8_t>{0x5A, 3, 0x70, 0x73}));
}
