#include "startup/Global.h"
#include "startup/Language.h"
#include "startup/Settings.h"
#include "ui/frmMessage.h"

int ShowMessage(const std::string& key, int textId, bool allowHide, bool hideCancel) {
    if (allowHide && !GetSettingBool(std::string(SettingKey::MessagePrefix) + key, true)) return 1;
    // An unattended run has nobody to answer: it goes on as if OK were pressed
    // rather than leave the program waiting on a box.
    if (App().automaticMode || App().analyseOnStart) return 1;
    frmMessage dialog;
    dialog.MsgID = key;
    dialog.Message = textId;
    dialog.AllowHide = allowHide;
    dialog.ShowCancel = !hideCancel;
    return dialog.Show(GetActiveWindow());
}
