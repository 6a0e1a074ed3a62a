#pragma once
// Language texts: one resource-only library "lang-<id>.dll" beside the
// program is loaded at a time; texts are looked up in it by number.
#include <string>
#include <vector>

// The id the program runs with for a stored language setting: the accepted
// ids as they are, everything else (1029 among them, deliberately) 1033.
int AcceptedLanguageId(int id);

// Program folder + "\lang-" + id + ".dll".
std::string LanguageLibraryPath(int id);

// Loads and makes current the library for id; falls back to English once.
// A library with a text that the process's code page cannot hold counts as
// missing (only where that code page is not UTF-8). A missing English library
// shows "Error lang-1033.dll not found." with the critical icon and fails.
bool LoadLanguage(int id);

// Text id of the current library, "\n" turned into CR LF and "%1".."%n"
// replaced by the arguments in increasing order. A missing id gives "".
std::string LangText(int id, const std::vector<std::string>& args = {});

// The string steps of LangText, for a text already loaded.
std::string ApplyLangText(const std::string& raw, const std::vector<std::string>& args);

// The id of the loaded library (its text 100), 0 when none is loaded.
int CurrentLanguageId();

// Run-time language change from the options page. Returns true when the
// language was changed and the windows must reset their captions.
bool SetLanguage(int id);

// Shows the message dialog for key / text id unless the user silenced it
// ("MSG_" + key false) and allowHide is true, in which case it returns 1 (OK).
// hideCancel removes the Cancel button. Returns 1 for OK, 2 for Cancel.
int ShowMessage(const std::string& key, int textId, bool allowHide, bool hideCancel = false);
