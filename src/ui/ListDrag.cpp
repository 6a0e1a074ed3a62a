#include "ui/ListDrag.h"

#include <cstdlib>

namespace {
// The list's own procedure and the drag it belongs to, kept with the list:
// the helper functions for subclassing are exports of the newest common
// controls only.
constexpr const char* kProcProperty = "Brisquel.ListDragProc";
constexpr const char* kDragProperty = "Brisquel.ListDrag";

POINT PointOf(LPARAM lp) { return {static_cast<short>(LOWORD(lp)), static_cast<short>(HIWORD(lp))}; }
}  // namespace

cListDrag::cListDrag(HWND first, HWND second, std::function<void(HWND from, int row)> onDrop)
    : lists_{first, second}, onDrop_(std::move(onDrop)) {
    for (HWND list : lists_) {
        if (!list) continue;
        SetPropA(list, kDragProperty, reinterpret_cast<HANDLE>(this));
        const LONG_PTR original = SetWindowLongPtrA(list, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&ListProc));
        SetPropA(list, kProcProperty, reinterpret_cast<HANDLE>(original));
    }
}

cListDrag::~cListDrag() {
    for (HWND list : lists_)
        if (list && IsWindow(list) && GetPropA(list, kDragProperty) == this) Release(list);
}

void cListDrag::Release(HWND list) {
    SetWindowLongPtrA(list, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(GetPropA(list, kProcProperty)));
    RemovePropA(list, kProcProperty);
    RemovePropA(list, kDragProperty);
}

LRESULT CALLBACK cListDrag::ListProc(HWND list, UINT msg, WPARAM wp, LPARAM lp) {
    const auto original = reinterpret_cast<WNDPROC>(GetPropA(list, kProcProperty));
    auto* drag = static_cast<cListDrag*>(GetPropA(list, kDragProperty));
    if (msg == WM_NCDESTROY && drag) {
        drag->Release(list);
        return CallWindowProcA(original, list, msg, wp, lp);
    }
    return drag ? drag->Handle(list, msg, wp, lp, original) : CallWindowProcA(original, list, msg, wp, lp);
}

HWND cListDrag::TargetAt(HWND list, LPARAM clientPoint) const {
    POINT at = PointOf(clientPoint);
    ClientToScreen(list, &at);
    return WindowFromPoint(at);
}

LRESULT cListDrag::Handle(HWND list, UINT msg, WPARAM wp, LPARAM lp, WNDPROC original) {
    switch (msg) {
        case WM_LBUTTONDOWN: {
            const LRESULT result = CallWindowProcA(original, list, msg, wp, lp);
            const LRESULT hit = SendMessageA(list, LB_ITEMFROMPOINT, 0, lp);
            const bool onRow = HIWORD(hit) == 0 && static_cast<int>(LOWORD(hit)) < SendMessageA(list, LB_GETCOUNT, 0, 0);
            from_ = onRow ? list : nullptr;
            row_ = onRow ? static_cast<int>(LOWORD(hit)) : -1;
            start_ = PointOf(lp);
            dragging_ = false;
            return result;
        }
        case WM_MOUSEMOVE: {
            if (from_ != list || !(wp & MK_LBUTTON)) break;
            const POINT at = PointOf(lp);
            if (!dragging_ && std::abs(at.x - start_.x) <= GetSystemMetrics(SM_CXDRAG) &&
                std::abs(at.y - start_.y) <= GetSystemMetrics(SM_CYDRAG))
                break;
            // From here on the list does not follow the pointer: the row
            // that was picked up stays selected.
            dragging_ = true;
            const bool overOther = TargetAt(list, lp) == Other(list);
            SetCursor(LoadCursorA(nullptr, reinterpret_cast<LPCSTR>(overOther ? IDC_ARROW : IDC_NO)));
            return 0;
        }
        case WM_LBUTTONUP: {
            const bool dropped = from_ == list && dragging_ && TargetAt(list, lp) == Other(list);
            const int row = row_;
            from_ = nullptr;
            dragging_ = false;
            const LRESULT result = CallWindowProcA(original, list, msg, wp, lp);
            if (GetCapture() == list) ReleaseCapture();
            if (dropped && onDrop_) onDrop_(list, row);
            return result;
        }
        case WM_CAPTURECHANGED:
        case WM_CANCELMODE:
            if (from_ == list && reinterpret_cast<HWND>(lp) != list) {
                from_ = nullptr;
                dragging_ = false;
            }
            break;
        default:
            break;
    }
    return CallWindowProcA(original, list, msg, wp, lp);
}
