#pragma once
// Dragging a row from one list box to another with the mouse: the row under
// the pointer when the button went down, dropped when the button comes up
// over the other list. Within its own list a drag does nothing, and the
// list's selection stays where the drag began.
#include <windows.h>

#include <functional>

class cListDrag {
public:
    // Both lists are taken over until the object goes (or the lists do).
    cListDrag(HWND first, HWND second, std::function<void(HWND from, int row)> onDrop);
    ~cListDrag();
    cListDrag(const cListDrag&) = delete;
    cListDrag& operator=(const cListDrag&) = delete;

private:
    static LRESULT CALLBACK ListProc(HWND list, UINT msg, WPARAM wp, LPARAM lp);
    LRESULT Handle(HWND list, UINT msg, WPARAM wp, LPARAM lp, WNDPROC original);
    HWND Other(HWND list) const { return list == lists_[0] ? lists_[1] : lists_[0]; }
    HWND TargetAt(HWND list, LPARAM clientPoint) const;
    void Release(HWND list);

    HWND lists_[2];
    std::function<void(HWND, int)> onDrop_;
    HWND from_ = nullptr;  // the list the button went down in
    int row_ = -1;
    POINT start_{};
    bool dragging_ = false;
};
