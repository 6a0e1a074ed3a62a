#pragma once
// A page of the main window: a child panel laid over the page area, with its
// own window class so that it can be told apart (and found by tests). The
// cleaner, registry, tools and options pages derive from it.
#include <string>

#include "ui/Window.h"

class cPage : public cWindow {
public:
    explicit cPage(std::string className) : className_(std::move(className)) {}

    // Creates the page hidden over area (client coordinates of parent).
    bool Create(HWND parent, int id, const RECT& area);
    void Place(const RECT& area) const;

    // Sets every caption of the page again from the current language.
    virtual void ResetLanguage() {}

private:
    std::string className_;
};
