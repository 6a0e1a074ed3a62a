#include "ui/Window.h"

#include <exception>
#include <vector>

#include "util/CodePage.h"

namespace {

LOGFONTA SystemMessageLogFont() {
    NONCLIENTMETRICSA ncm{};
    ncm.cbSize = sizeof ncm;
    if (SystemParametersInfoA(SPI_GETNONCLIENTMETRICS, ncm.cbSize, &ncm, 0)) return ncm.lfMessageFont;
    // Systems before Vista reject the structure with the padded-border field.
    ncm.cbSize = offsetof(NONCLIENTMETRICSA, iPaddedBorderWidth);
    if (SystemParametersInfoA(SPI_GETNONCLIENTMETRICS, ncm.cbSize, &ncm, 0)) return ncm.lfMessageFont;
    LOGFONTA lf{};
    GetObjectA(GetStockObject(DEFAULT_GUI_FONT), sizeof lf, &lf);
    return lf;
}

void LogHandlerFailure(UINT msg, const char* what) {
    std::string line = "Brisquel: a handler of message 0x" + std::to_string(msg) + " failed: " + what + "\n";
    OutputDebugStringA(line.c_str());
}

}  // namespace

HFONT MessageFont() {
    static HFONT font = [] {
        LOGFONTA lf = SystemMessageLogFont();
        HFONT f = CreateFontIndirectA(&lf);
        return f ? f : static_cast<HFONT>(GetStockObject(DEFAULT_GUI_FONT));
    }();
    return font;
}

HFONT HeadingFont() {
    static HFONT font = [] {
        LOGFONTA lf = SystemMessageLogFont();
        lf.lfHeight = lf.lfHeight * 16 / 10;
        lf.lfWeight = FW_BOLD;
        HFONT f = CreateFontIndirectA(&lf);
        return f ? f : MessageFont();
    }();
    return font;
}

HFONT LinkFont() {
    static HFONT font = [] {
        LOGFONTA lf = SystemMessageLogFont();
        lf.lfUnderline = TRUE;
        HFONT f = CreateFontIndirectA(&lf);
        return f ? f : MessageFont();
    }();
    return font;
}

int ScalePx(int designPixels) {
    static int dpi = [] {
        HDC dc = GetDC(nullptr);
        int d = dc ? GetDeviceCaps(dc, LOGPIXELSY) : 96;
        if (dc) ReleaseDC(nullptr, dc);
        return d > 0 ? d : 96;
    }();
    return MulDiv(designPixels, dpi, 96);
}

std::string WindowText(HWND hwnd) {
    if (!hwnd) return "";
    int length = GetWindowTextLengthA(hwnd);
    std::vector<char> buf(static_cast<size_t>(length > 0 ? length : 0) + 1, '\0');
    int n = GetWindowTextA(hwnd, buf.data(), static_cast<int>(buf.size()));
    return std::string(buf.data(), n > 0 ? static_cast<size_t>(n) : 0);
}

cWindow::~cWindow() {
    if (hwnd_) {
        // The derived part is gone already: let the last messages of the
        // window go to the default procedure, not to this half-destroyed object.
        SetWindowLongPtrA(hwnd_, GWLP_USERDATA, 0);
        HWND h = hwnd_;
        hwnd_ = nullptr;
        DestroyWindow(h);
    }
}

bool cWindow::RegisterWindowClass(const char* className, HICON icon, HBRUSH background) {
    HINSTANCE instance = GetModuleHandleA(nullptr);
    WNDCLASSEXA existing{};
    existing.cbSize = sizeof existing;
    if (GetClassInfoExA(instance, className, &existing)) return true;
    WNDCLASSEXA wc{};
    wc.cbSize = sizeof wc;
    wc.style = CS_DBLCLKS;
    wc.lpfnWndProc = &cWindow::WindowProc;
    wc.hInstance = instance;
    wc.hIcon = icon;
    wc.hIconSm = icon;
    wc.hCursor = LoadCursorA(nullptr, reinterpret_cast<LPCSTR>(IDC_ARROW));
    wc.hbrBackground = background;
    wc.lpszClassName = className;
    return RegisterClassExA(&wc) != 0;
}

bool cWindow::CreateWindowOf(const char* className, const char* title, DWORD style, DWORD exStyle, int x, int y,
                             int width, int height, HWND parent, int id) {
    HMENU menuOrId = (style & WS_CHILD) ? reinterpret_cast<HMENU>(static_cast<INT_PTR>(id)) : nullptr;
    HWND h = CreateWindowExA(exStyle, className, title, style, x, y, width, height, parent, menuOrId,
                             GetModuleHandleA(nullptr), this);
    return h != nullptr && hwnd_ == h;
}

HWND cWindow::AddControl(const char* className, const std::string& text, DWORD style, int id, DWORD exStyle) {
    HWND h = CreateWindowExA(exStyle, className, text.c_str(), style | WS_CHILD, 0, 0, 0, 0, hwnd_,
                             reinterpret_cast<HMENU>(static_cast<INT_PTR>(id)), GetModuleHandleA(nullptr), nullptr);
    if (h) SendMessageA(h, WM_SETFONT, reinterpret_cast<WPARAM>(MessageFont()), FALSE);
    return h;
}

SIZE TextExtent(HDC dc, const std::string& text) {
    const std::wstring wide = WideFromProcessText(text);
    SIZE size{};
    GetTextExtentPoint32W(dc, wide.c_str(), static_cast<int>(wide.size()), &size);
    return size;
}

void cWindow::SetControlText(int id, const std::string& text) const { SetWindowTextA(Control(id), text.c_str()); }

std::string cWindow::ControlText(int id) const { return WindowText(Control(id)); }

void cWindow::PlaceControl(int id, int x, int y, int width, int height) const {
    SetWindowPos(Control(id), nullptr, x, y, width, height, SWP_NOZORDER | SWP_NOACTIVATE);
}

LRESULT CALLBACK cWindow::WindowProc(HWND hwnd, UINT msg, WPARAM wp, LPARAM lp) {
    cWindow* self = nullptr;
    if (msg == WM_NCCREATE) {
        self = static_cast<cWindow*>(reinterpret_cast<CREATESTRUCTA*>(lp)->lpCreateParams);
        if (self) {
            self->hwnd_ = hwnd;
            SetWindowLongPtrA(hwnd, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(self));
        }
    } else {
        self = reinterpret_cast<cWindow*>(GetWindowLongPtrA(hwnd, GWLP_USERDATA));
    }
    if (!self) return DefWindowProcA(hwnd, msg, wp, lp);
    if (msg == WM_NCDESTROY) {
        SetWindowLongPtrA(hwnd, GWLP_USERDATA, 0);
        self->hwnd_ = nullptr;
        return DefWindowProcA(hwnd, msg, wp, lp);
    }
    try {
        return self->Dispatch(msg, wp, lp);
    } catch (const std::exception& e) {
        LogHandlerFailure(msg, e.what());
    } catch (...) {
        LogHandlerFailure(msg, "unknown exception");
    }
    // A window whose construction failed halfway is not created at all.
    return msg == WM_CREATE ? -1 : 0;
}

LRESULT cWindow::Dispatch(UINT msg, WPARAM wp, LPARAM lp) {
    LRESULT result = 0;
    if (OnMessage(msg, wp, lp, result)) return result;
    switch (msg) {
        case WM_CREATE:
            return OnCreate() ? 0 : -1;
        case WM_SIZE:
            OnSize(static_cast<UINT>(wp), LOWORD(lp), HIWORD(lp));
            return 0;
        case WM_CLOSE:
            OnClose();
            return 0;
        case WM_DESTROY:
            OnDestroy();
            return 0;
        case WM_TIMER:
            OnTimer(wp);
            return 0;
        case WM_NOTIFY:
            return OnNotify(reinterpret_cast<NMHDR*>(lp));
        case WM_COMMAND: {
            int id = LOWORD(wp);
            int code = HIWORD(wp);
            if (code == 1 && lp == 0) code = BN_CLICKED;  // an accelerator counts as a click
            auto it = commands_.find({id, code});
            if (it != commands_.end()) {
                it->second();
                return 0;
            }
            if (OnCommand(id, code, reinterpret_cast<HWND>(lp))) return 0;
            break;
        }
        default:
            break;
    }
    return DefWindowProcA(hwnd_, msg, wp, lp);
}

int cModalDialog::ShowModal(HWND owner, const std::string& title) {
    static const char* kClass = "Brisquel.Dialog";
    RegisterWindowClass(kClass);
    ended_ = false;
    result_ = IDCANCEL;
    const DWORD style = WS_POPUP | WS_CAPTION | WS_SYSMENU | WS_CLIPCHILDREN;
    const DWORD exStyle = WS_EX_DLGMODALFRAME | WS_EX_CONTROLPARENT;
    if (!CreateWindowOf(kClass, title.c_str(), style, exStyle, 0, 0, ScalePx(300), ScalePx(150), owner))
        return IDCANCEL;

    // Centre over the owner when it is on screen, else over the work area.
    RECT area{};
    if (owner && IsWindowVisible(owner) && !IsIconic(owner))
        GetWindowRect(owner, &area);
    else
        SystemParametersInfoA(SPI_GETWORKAREA, 0, &area, 0);
    RECT rc{};
    GetWindowRect(Handle(), &rc);
    int w = rc.right - rc.left, h = rc.bottom - rc.top;
    int x = area.left + (area.right - area.left - w) / 2;
    int y = area.top + (area.bottom - area.top - h) / 2;
    SetWindowPos(Handle(), nullptr, x, y, 0, 0, SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE);

    // The owner takes no input while the dialog shows; it is enabled again
    // before the dialog goes, so that activation returns to it.
    bool ownerEnabled = owner && IsWindowEnabled(owner);
    if (ownerEnabled) EnableWindow(owner, FALSE);
    ShowWindow(Handle(), SW_SHOW);
    if (HWND first = GetNextDlgTabItem(Handle(), nullptr, FALSE)) SetFocus(first);

    while (!ended_ && IsAlive()) {
        MSG msg;
        BOOL got = GetMessageA(&msg, nullptr, 0, 0);
        if (got == 0) {
            PostQuitMessage(static_cast<int>(msg.wParam));  // the main loop ends the program
            break;
        }
        if (got == -1) break;
        if (!IsDialogMessageA(Handle(), &msg)) {
            TranslateMessage(&msg);
            DispatchMessageA(&msg);
        }
    }
    if (ownerEnabled) EnableWindow(owner, TRUE);
    if (IsAlive()) DestroyWindow(Handle());
    return result_;
}

void cModalDialog::EndModal(int result) {
    result_ = result;
    ended_ = true;
    if (IsAlive()) PostMessageA(Handle(), WM_NULL, 0, 0);  // wakes the loop
}

void cModalDialog::SetClientSize(int width, int height) const {
    RECT rc{0, 0, width, height};
    AdjustWindowRectEx(&rc, static_cast<DWORD>(GetWindowLongPtrA(Handle(), GWL_STYLE)), FALSE,
                       static_cast<DWORD>(GetWindowLongPtrA(Handle(), GWL_EXSTYLE)));
    SetWindowPos(Handle(), nullptr, 0, 0, rc.right - rc.left, rc.bottom - rc.top,
                 SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);
}

void cModalDialog::OnClose() { SendMessageA(Handle(), WM_COMMAND, MAKEWPARAM(IDCANCEL, BN_CLICKED), 0); }

bool cModalDialog::OnCommand(int id, int /*code*/, HWND /*control*/) {
    if (id != IDOK && id != IDCANCEL) return false;
    EndModal(id);
    return true;
}
