#include "module/panel_test.h"

using namespace std::chrono_literals;
using test_support::DialogDriver;
using test_support::Eventually;
using test_support::ModuleTest;
using test_support::PanelTest;
using Texts = std::vector<std::string>;

namespace test_support {

PanelTest::~PanelTest() {
    EndPanelThread();
}

void PanelTest::EndPanelThread() {
    stop_ = true;
    owner_.Join();
}

void PanelTest::StartOnPanelThread() {
    stop_ = false;
    owner_ = Thread([this] {
        Start();
        RunMessages([this] { return stop_.load(); }, 600s);
    });
    panel_ = std::make_unique<DialogDriver>("Mitutoyo QI");
    ASSERT_TRUE(Eventually([this] { return Panel().Text(IDC_LIGHT_2_PERCENT) == "25"; }));
}

void PanelTest::OpenPanel(const std::string& settings) {
    line_ = &PlugIn();
    Load("Dialog=1\n" + settings);
    StartOnPanelThread();
    log.Take();
}

std::vector<std::string> PanelTest::RequestsOf(int button) {
    Line()->TakeRequestLog();
    Panel().PressAndWait(button);
    return Line()->TakeRequestLog();
}

}  // namespace test_support

namespace {

bool StartsWith(const std::string& text, const std::string& start) {
    return text.rfind(start, 0) == 0;
}

TEST_F(PanelTest, ShowsTheSettingsAndIsMadeOnce) {
    OpenPanel("CmdPoll=1000000\nBaudRate=19200\nByteSize=7\nParity=2\nStopBits=2\n");
    const std::vector<std::pair<int, std::string>> boxes{
        {IDC_PORT, "3"},     {IDC_BAUD_RATE, "19200"}, {IDC_BYTE_SIZE, "7"},
        {IDC_PARITY, "2"},   {IDC_STOP_BITS, "2"},     {IDC_LIGHT_1_PERCENT, "25"},
        {IDC_POSITION, ""},  {IDC_STATUS, ""},         {IDC_TARGET, ""},
        {IDC_SEND_TEXT, ""}, {IDC_LIGHT_1_REPLY, ""},  {IDC_LIGHT_2_REPLY, ""}};
    for (const auto& [box, text] : boxes) {
        EXPECT_EQ(Panel().Text(box), text) << box;
    }
    for (const int way : {IDC_CLOSE, IDCANCEL, 0}) {
        way == 0 ? Panel().Close() : Panel().Press(way);
        EXPECT_TRUE(Eventually([&] { return !Panel().IsVisible(); })) << way;
        EXPECT_TRUE(Panel().Exists());
        Start(1);  // From another thread than the panel's.
        EXPECT_TRUE(Eventually([&] { return Panel().IsVisible(); })) << way;
        EXPECT_EQ(DialogDriver("Mitutoyo QI").Window(), Panel().Window());
    }
}

TEST_F(PanelTest, PanelGoesWithItsThreadAndTheNextStartMakesANewOne) {
    OpenPanel();
    const HWND first = Panel().Window();
    EndPanelThread();
    EXPECT_TRUE(Eventually([&] { return !DialogDriver(first).Exists(); }));
    StartOnPanelThread();
    EXPECT_NE(Panel().Window(), first);
    EXPECT_EQ(RequestsOf(IDC_REMOTE_ENABLE), Texts{"@SMOD=1\r\n"});
    EXPECT_TRUE(Eventually([this] { return Panel().Text(IDC_SENT) == "@SMOD=1\r\n"; }))
        << "its boxes show the line";
}

TEST_F(PanelTest, OnlyOneTurnsTheRecoveryOn) {
    OpenPanel("CmdPoll=1000000\nReopen=2\nStrictReplies=1\n");
    EXPECT_EQ(Panel().Text(IDC_RECOVERY), "Reopen 0, StrictReplies 1");
}

TEST_F(PanelTest, LostLineShowsUntilItIsBack) {
    OpenPanel("CmdPoll=20\nReopen=1\n");
    const auto shows = [this](const std::string& text) {
        return Eventually([&] { return Panel().Text(IDC_RECOVERY) == text; }, 60s);
    };
    EXPECT_TRUE(shows("Reopen 1, StrictReplies 0, losses 0"));
    Line()->SetScript([](const std::string&) { return ""; });
    EXPECT_TRUE(shows("Reopen 1, StrictReplies 0, LINE LOST, losses 1"));
    Line()->SetScript({});
    EXPECT_TRUE(shows("Reopen 1, StrictReplies 0, losses 1"));
}

TEST_F(ModuleTest, OtherDialogValuesShowNoPanel) {
    PlugIn();
    Load("Dialog=2\n");
    Start();
    EXPECT_EQ(FindWindowW(nullptr, WIDE("Mitutoyo QI")), nullptr);
}

TEST_F(PanelTest, LightBoxesTakeANumberAndHoldItToPercent) {
    OpenPanel();
    const std::vector<std::pair<std::string, std::string>> cases{
        {"150", "10000"}, {"-5", "0"},     {"50", "5000"},          {"12abc", "1200"},
        {" \t7", "700"},  {"+3.9", "300"}, {"2147483647", "10000"}, {"-2147483648", "0"},
        {"letters", ""},  {"", ""},        {"12345678901", ""},     {"2147483648", ""}};
    for (const auto& [typed, value] : cases) {
        Panel().Type(IDC_LIGHT_1_PERCENT, typed);
        log.Take();
        const Texts requests = RequestsOf(IDC_SET_LIGHT_1);
        if (value.empty()) {
            EXPECT_EQ(requests, Texts{}) << typed;
            EXPECT_EQ(log.Take(), "error converting: " + typed + "\n");
        } else {
            EXPECT_EQ(requests, (Texts{"@LBRT1=" + value + "\r\n", "@LBRT1?"})) << typed;
            EXPECT_EQ(log.Take(), "SEND=@LBRT1=" + value + "\r\n\n");
            EXPECT_TRUE(StartsWith(Panel().Text(IDC_LIGHT_1_REPLY), ">LBRT1=" + value)) << typed;
        }
    }
    EXPECT_EQ(RequestsOf(IDC_SET_LIGHT_2), (Texts{"@LBRT2=2500\r\n", "@LBRT2?"}));
    EXPECT_TRUE(StartsWith(Panel().Text(IDC_LIGHT_2_REPLY), ">LBRT2=2500"));
    Line()->SetScript([](const std::string&) { return ""; });
    EXPECT_EQ(RequestsOf(IDC_SET_LIGHT_2), (Texts{"@LBRT2=2500\r\n"})) << "no query after silence";
    EXPECT_TRUE(StartsWith(Panel().Text(IDC_LIGHT_2_REPLY), ">LBRT2=2500")) << "kept";
}

TEST_F(PanelTest, TargetIsCutAtCommasAndBlanks) {
    OpenPanel();
    const std::vector<std::pair<std::string, std::string>> cases{
        {"0.2,-0.1", "+200000,-100000,+0"},
        {" 0.2 ,, 0.1 ", "+200000,+100000,+0"},
        {"1 2", "+1000000,+2000000,+0"},
        {"1 2 -3 4", "+1000000,+2000000,-3000000"},
        {"x 1", "+0,+1000000,+0"},
        {"1;2 3", "+1000000,+3000000,+0"},
        {"5", ""},
        {"", ""},
        {" , ", ""},
        {"1 3000", ""}};
    for (const auto& [typed, counts] : cases) {
        Panel().Type(IDC_TARGET, typed);
        log.Take();
        EXPECT_EQ(RequestsOf(IDC_SET_POSITION),
                  counts.empty() ? Texts{} : Texts{"@MMVAL=" + counts + "\r\n"})
            << typed;
        EXPECT_EQ(log.Take(), typed == "1 3000" ? "MOVE OUT OF RANGE\n" : "") << typed;
    }
}

TEST_F(PanelTest, EndOfAMoveIsLogged) {
    OpenPanel("CmdPoll=10\n");
    Panel().Type(IDC_TARGET, "0.01 0.01");
    Panel().PressAndWait(IDC_SET_POSITION);
    EXPECT_TRUE(log.WaitFor("MyOvsCncCallbackFunc finished=1 error=0 data=123\n"));
}

TEST_F(PanelTest, ReadoutsCountWhatTheyShow) {
    OpenPanel();
    struct Case {
        int button;
        int box;
        std::string reply;
        std::string shown;
    };
    const std::string zeros = ",0,0,0,0,0,0,0,0";
    const std::vector<Case> cases{
        {IDC_GET_POSITION, IDC_POSITION, ">CPOSMR=100,-200,300", "1: X=100, Y=-200, Z=300"},
        {IDC_GET_POSITION, IDC_POSITION, ">CPOSMR=#,7,0", "1: X=100, Y=-200, Z=300"},
        {IDC_GET_POSITION, IDC_POSITION, ">CPOSMR=E1,-200,F22", "2: X=E1, Y=-200, Z=F22"},
        {IDC_GET_STATUS, IDC_STATUS, ">SSWC=1,9,1" + zeros + ",1,2,9,9,9",
         "1: EMER_SW=1, SW_Y=1, DATA_SW=0, FOOT_SW=1, MEAS_MODE=2"},
        {IDC_GET_STATUS, IDC_STATUS, ">SSWC=1,2,3",
         "1: EMER_SW=1, SW_Y=1, DATA_SW=0, FOOT_SW=1, MEAS_MODE=2"},
        {IDC_GET_STATUS, IDC_STATUS, ">SSWC=0,9,0,9,-4" + zeros + ",0,0,9",
         "2: EMER_SW=0, SW_Y=0, DATA_SW=-4, FOOT_SW=0, MEAS_MODE=0"}};
    for (const Case& one : cases) {
        Line()->SetScript([reply = one.reply](const std::string&) { return reply + "\r\n"; });
        EXPECT_EQ(RequestsOf(one.button).size(), 1U) << one.reply;
        EXPECT_EQ(Panel().Text(one.box), one.shown) << one.reply;
    }
}

TEST_F(PanelTest, StreamReadsAtEachTickUntilThePanelIsHidden) {
    OpenPanel();
    const auto tick = [this] {
        Line()->TakeRequestLog();
        SendMessageW(Panel().Window(), WM_TIMER, 1, 0);
        return Line()->TakeRequestLog();
    };
    EXPECT_EQ(tick(), Texts{});
    Panel().PressAndWait(IDC_STREAM_POSITION);
    EXPECT_TRUE(Eventually([&] { return Panel().Text(IDC_POSITION) == "2: X=0, Y=0, Z=0"; }))
        << "its own timer runs";
    EXPECT_FALSE(tick().empty());
    Panel().PressAndWait(IDC_STREAM_POSITION);
    EXPECT_EQ(tick(), Texts{});
    Panel().PressAndWait(IDC_STREAM_POSITION);
    Panel().PressAndWait(IDC_CLOSE);
    EXPECT_EQ(tick(), Texts{});
}

TEST_F(PanelTest, PortFieldsCountFromTheNextReadoutOn) {
    OpenPanel();
    Panel().Type(IDC_PORT, "8");
    Panel().PressAndWait(IDC_OPEN_COMM);
    EXPECT_EQ(log.Take(), "") << "open already, and the boxes are not read";
    struct Case {
        int box;
        std::string wrong, right, said;
    };
    const std::vector<Case> cases{
        {IDC_PORT, "9", "3", "COM9\nZbComOpen CreateFile Error: "},
        {IDC_PORT, "", "3", "COM0\nZbComOpen CreateFile Error: "},
        {IDC_PORT, "x", "3", "COM0\nZbComOpen CreateFile Error: "},
        {IDC_BYTE_SIZE, "3", "8", "COM3\nZbComOpen SetCommState Error: "},
        {IDC_STOP_BITS, "7", "0", "COM3\nZbComOpen SetCommState Error: "}};
    for (const Case& one : cases) {
        Panel().PressAndWait(IDC_CLOSE_COMM);
        Panel().Type(IDC_PORT, "3");
        Panel().Type(one.box, one.wrong);
        EXPECT_EQ(RequestsOf(IDC_GET_POSITION), Texts{}) << one.said;
        EXPECT_NE(log.Take().find("ZbComOpen opening: \\\\.\\" + one.said), std::string::npos)
            << one.said;
        Panel().PressAndWait(IDC_CLOSE_COMM);
        Panel().Type(one.box, one.right);
        EXPECT_EQ(RequestsOf(IDC_GET_STATUS), Texts{"@SSWC?\r\n"}) << one.said;
        EXPECT_EQ(log.Take(), "ZbComOpen opening: \\\\.\\COM3\n");
    }
}

TEST_F(PanelTest, BuffersShowEveryExchange) {
    OpenPanel("CmdPoll=20\n");
    for (const int box : {IDC_SENT, IDC_RECEIVED}) {
        const std::string start = box == IDC_SENT ? "@" : ">";
        EXPECT_TRUE(Eventually([&] { return StartsWith(Panel().Text(box), start + "CPOSMR"); }))
            << "the worker's";
        EXPECT_TRUE(Eventually([&] { return StartsWith(Panel().Text(box), start + "SSWC"); }));
    }
    Panel().Type(IDC_SEND_TEXT, "@" + std::string(400, 'x'));
    const Texts requests = RequestsOf(IDC_SEND);
    EXPECT_EQ(std::count(requests.begin(), requests.end(), "@" + std::string(252, 'x') + "\r\n"),
              1);
}

TEST_F(PanelTest, HomingDialogsAreThePanelsOwn) {
    OpenPanel();
    for (const auto& [button, caption] :
         {std::pair{IDC_HOME, "Axis Homing In Progress"}, std::pair{IDC_HOME_CNC, "Warning"}}) {
        Panel().Press(button);
        const DialogDriver homing{std::string(caption)};
        EXPECT_FALSE(Panel().AcceptsInput()) << caption;
        homing.Press(IDCANCEL);
        EXPECT_TRUE(Eventually([&] { return Panel().AcceptsInput(); })) << caption;
    }
}

TEST_F(PanelTest, SilentControllerHoldsAClickForItsOwnTurnOnly) {
    OpenPanel("CmdPoll=0\n");
    Line()->SetScript([](const std::string&) { return ""; });
    Panel().Type(IDC_SEND_TEXT, "@SMOD?");
    const Texts requests = RequestsOf(IDC_SEND);
    const auto own = std::find(requests.begin(), requests.end(), "@SMOD?\r\n");
    ASSERT_NE(own, requests.end());
    EXPECT_LE(own - requests.begin(), 2) << "at most the exchange under way and the one begun "
                                            "before the click was seen";
    Panel().Press(IDC_SEND);
    const ULONGLONG start = GetTickCount64();
    Stop();
    EXPECT_LT(GetTickCount64() - start, 4500U);
}

TEST_F(PanelTest, PanelOutlivesTheHostsInterestInTheModule) {
    OpenPanel("CmdPoll=10\n");
    Unload();
    EXPECT_EQ(RequestsOf(IDC_GET_POSITION), Texts{"@CPOSMR?\r\n"});
    EXPECT_EQ(Panel().Text(IDC_POSITION), "1: X=0, Y=0, Z=0");
}

constexpr int Presses = 300;

void CancelHoming() {
    for (const WCHAR* caption : {WIDE("Axis Homing In Progress"), WIDE("Warning")}) {
        if (const HWND homing = FindWindowW(nullptr, caption)) {
            PostMessageW(homing, WM_COMMAND, IDCANCEL, 0);
        }
    }
}

/// Presses the panel's buttons one after the other, ten times a second, and cancels homing.
void Hammer(const DialogDriver& panel, int presses, const std::function<void()>& startAgain) {
    constexpr int Buttons[] = {IDC_GET_POSITION,  IDC_HOME,        IDC_SET_LIGHT_1,
                               IDC_OPEN_COMM,     IDC_SEND,        IDC_SET_POSITION,
                               IDC_CLOSE_COMM,    IDC_GET_STATUS,  IDC_HOME_CNC,
                               IDC_REMOTE_ENABLE, IDC_SET_LIGHT_2, IDC_STREAM_POSITION,
                               IDC_CLOSE};
    for (int press = 0; press < presses; ++press) {
        const int button = Buttons[static_cast<std::size_t>(press) % std::size(Buttons)];
        panel.Press(button);
        test_support::Pause(100ms);
        CancelHoming();
        if (button == IDC_CLOSE) {
            startAgain();
        }
    }
}

TEST_F(PanelTest, HammeredPanelAndBusyModuleLoseNothing) {
    OpenPanel("CmdPoll=0\nScaleFactor=1\n");
    Line()->SetScript(
        [count = 0](const std::string& request) mutable -> std::optional<std::string> {
            if (request != "@CPOSMR?\r\n") {
                return std::nullopt;
            }
            const std::string number = std::to_string(++count);
            return ">CPOSMR=" + number + ",-" + number + "," + number + "\r\n";
        });
    Panel().Type(IDC_SEND_TEXT, "@SMOD=1");
    Panel().Type(IDC_TARGET, "0.001 0.001");
    std::atomic<bool> stop{false};
    test_support::Thread host([&] {
        for (int i = 1; !stop; ++i) {
            EXPECT_TRUE(
                Module().ZbOvisk_CncGotoAbsoluteNotifyWorld(0.001 * (i % 5), 0, 0, nullptr, i));
            EXPECT_TRUE(Module().ZbOvisk_SetLight(i % 8, i % 256));
            const OviskData data = Snapshot();
            EXPECT_TRUE(data.cposmr.y == -data.cposmr.x && data.cposmr.z == data.cposmr.x);
        }
    });
    Hammer(Panel(), Presses, [this] { Start(); });
    int number = 0, x = 0, y = 0, z = 0;
    EXPECT_TRUE(Eventually(
        [&] {
            CancelHoming();
            const std::string shown = Panel().Text(IDC_POSITION);
            return std::sscanf(shown.c_str(), "%d: X=%d, Y=%d, Z=%d", &number, &x, &y, &z) == 4 &&
                   number >= Presses / 13;
        },
        600s))
        << "each press is served: " << number;
    EXPECT_TRUE(x == -y && x == z) << Panel().Text(IDC_POSITION);
    stop = true;
    host.Join();
    const std::string said = log.Take();
    for (const char* trouble : {"BADCMD", "TIMEEOUT", "Error", "ERROR", "failure"}) {
        EXPECT_EQ(said.find(trouble), std::string::npos) << said.substr(said.find(trouble), 200);
    }
}

}  // namespace
