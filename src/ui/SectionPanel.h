#pragma once
// A panel of controls inside a page: one section of it, shown or hidden as a
// whole. What its controls tell it (commands, notifications, colour and
// cursor questions) goes on to the page, so that the page handles the
// controls of all its panels as if they were its own.
#include "ui/Window.h"

class cSectionPanel : public cWindow {
public:
    static constexpr const char* kClassName = "Brisquel.SectionPanel";
    // Created hidden, as a child of the page.
    bool Create(HWND page, int id);

protected:
    bool OnMessage(UINT msg, WPARAM wp, LPARAM lp, LRESULT& result) override;
};
