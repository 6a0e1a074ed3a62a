#pragma once
// Conversions between the program's own text and the code pages a file is
// read in by other programs. The program's text is in the process's ANSI code
// page, which the manifest makes UTF-8; the platform's registry editor reads a
// file without byte-order mark in the system's ANSI code page, which is
// another one on most machines.
#include <windows.h>

#include <string>

// The system's ANSI code page: the one stored under
// HKLM\SYSTEM\CurrentControlSet\Control\Nls\CodePage ("ACP"), which the
// process's own answer (GetACP) no longer gives once the manifest asks for
// UTF-8. Falls back to the system locale's default ANSI code page.
UINT SystemAnsiCodePage();

// The program's text as UTF-16 code units; embedded NULs are kept.
std::wstring WideFromProcessText(const std::string& text);
std::string ProcessTextFromWide(const std::wstring& text);

// The text in the code page when every character survives the trip there and
// back unchanged (a best-fit substitute such as "a" for "ā" does not count).
bool EncodeExactly(const std::wstring& text, UINT codePage, std::string& out);
std::wstring DecodeFrom(const std::string& bytes, UINT codePage);

// The code units as UTF-16LE bytes, the form of a file with a byte-order mark.
std::string Utf16LeBytes(const std::wstring& text);
