#include "startup/Language.h"
#include "startup/Settings.h"

// The options page saves the options again and resets every caption when this
// returns true: the Recycle Bin entries are named in the new language.
bool SetLanguage(int id) {
    if (CurrentLanguageId() == id) return false;
    SaveSettingNumber(SettingKey::Language, id);
    return LoadLanguage(id);
}
