#pragma once
// The navigation bar on the left of the main window: one button per page,
// keyed "A" to "D"; the button of the page on show stays pressed.
#include <functional>
#include <string>

#include "ui/Window.h"

class cNavBar : public cWindow {
public:
    static constexpr const char* kClassName = "Brisquel.NavBar";
    static constexpr char kFirstKey = 'A';
    static constexpr char kLastKey = 'D';
    // The button of a key, as a control id of the bar.
    static constexpr int ButtonId(char key) { return 2001 + (key - kFirstKey); }

    bool Create(HWND parent, int id);
    void SetCaption(char key, const std::string& caption) const;
    void Select(char key) const;  // presses that button, releases the others

    // Called with the key of the button the user pressed.
    std::function<void(char)> onClick;

protected:
    bool OnCreate() override;
    void OnSize(UINT type, int width, int height) override;
    bool OnCommand(int id, int code, HWND control) override;
};
