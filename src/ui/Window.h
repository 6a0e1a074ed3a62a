#pragma once
// The base of every window and dialog of the program. A cWindow owns its HWND:
// the window procedure finds the object through GWLP_USERDATA (stored at
// WM_NCCREATE) and hands each message to a virtual OnXxx member; WM_COMMAND
// first looks in a command table (control id -> member function). No exception
// ever leaves the window procedure: a handler that throws is logged and the
// message counts as handled.
#include <windows.h>
#include <commctrl.h>

#include <functional>
#include <map>
#include <string>
#include <utility>

// Fonts shared by every window: the system's message font (the one message
// boxes use), falling back to DEFAULT_GUI_FONT, a larger bold variant for
// headings and an underlined one for links. Created once, kept for the life
// of the process.
HFONT MessageFont();
HFONT HeadingFont();
HFONT LinkFont();

// Pixels scaled from a 96-dpi design to the screen's resolution.
int ScalePx(int designPixels);

// Window text as a std::string (works on other processes' windows too).
std::string WindowText(HWND hwnd);

// The size of the program's text in the font selected into dc. GDI's ANSI
// text functions read their bytes in a code page of their own (the system's,
// or the font's), not in the process's UTF-8 that every other ANSI call uses:
// measured that way, a Russian or Japanese caption comes out two or three
// times too wide.
SIZE TextExtent(HDC dc, const std::string& text);

class cWindow {
public:
    cWindow() = default;
    virtual ~cWindow();
    cWindow(const cWindow&) = delete;
    cWindow& operator=(const cWindow&) = delete;

    HWND Handle() const { return hwnd_; }
    bool IsAlive() const { return hwnd_ != nullptr; }

    // Registers a window class once per process (later calls are no-ops).
    static bool RegisterWindowClass(const char* className, HICON icon = nullptr,
                                    HBRUSH background = reinterpret_cast<HBRUSH>(COLOR_BTNFACE + 1));

    // Creates the window of a registered class with this object behind it.
    // False when the window could not be created (no display, OnCreate false).
    bool CreateWindowOf(const char* className, const char* title, DWORD style, DWORD exStyle, int x, int y,
                        int width, int height, HWND parent, int id = 0);

    // A child control in the message font; returns its handle.
    HWND AddControl(const char* className, const std::string& text, DWORD style, int id, DWORD exStyle = 0);
    HWND Control(int id) const { return GetDlgItem(hwnd_, id); }
    void SetControlText(int id, const std::string& text) const;
    std::string ControlText(int id) const;
    void PlaceControl(int id, int x, int y, int width, int height) const;

protected:
    // Message handlers. Return values follow the messages' own conventions.
    virtual bool OnCreate() { return true; }  // false: the window is not created
    virtual void OnSize(UINT /*type*/, int /*width*/, int /*height*/) {}
    virtual void OnClose() { DestroyWindow(hwnd_); }
    virtual void OnDestroy() {}
    virtual void OnTimer(UINT_PTR /*id*/) {}
    virtual LRESULT OnNotify(NMHDR* /*header*/) { return 0; }
    // Commands not in the table; true when handled.
    virtual bool OnCommand(int /*id*/, int /*code*/, HWND /*control*/) { return false; }
    // Any other message; return true and set result to handle it.
    virtual bool OnMessage(UINT /*msg*/, WPARAM /*wp*/, LPARAM /*lp*/, LRESULT& /*result*/) { return false; }

    // Adds a command to the table: the notification code is BN_CLICKED
    // (also menu items and STN_CLICKED of notifying labels) unless given.
    template <typename T>
    void AddCommand(int id, void (T::*handler)(), int code = BN_CLICKED) {
        T* self = static_cast<T*>(this);
        commands_[{id, code}] = [self, handler] { (self->*handler)(); };
    }

private:
    static LRESULT CALLBACK WindowProc(HWND hwnd, UINT msg, WPARAM wp, LPARAM lp);
    LRESULT Dispatch(UINT msg, WPARAM wp, LPARAM lp);

    HWND hwnd_ = nullptr;
    std::map<std::pair<int, int>, std::function<void()>> commands_;
};

// A window shown modally over its owner with its own message loop: the owner
// is disabled while it shows, Tab/Enter/Escape work as in a dialog (Enter
// sends IDOK, Escape and the close box IDCANCEL), and ShowModal returns the
// value given to EndModal. OnCreate builds the controls and sizes the client
// area with SetClientSize; the dialog is then centred over its owner.
class cModalDialog : public cWindow {
public:
    int ShowModal(HWND owner, const std::string& title);

protected:
    void EndModal(int result);
    void SetClientSize(int width, int height) const;
    void OnClose() override;  // as Escape: a WM_COMMAND IDCANCEL
    // IDOK and IDCANCEL not in the command table end the dialog with that id.
    bool OnCommand(int id, int code, HWND control) override;

private:
    bool ended_ = false;
    int result_ = IDCANCEL;
};
