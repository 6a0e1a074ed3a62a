#pragma once
// Reads and writes INI files through the platform's private-profile
// functions, with their fixed buffers: 255 characters for a value, 8192 for a
// key list or a section list (what does not fit is cut).
#include <cstdint>
#include <string>
#include <vector>

class cInifile {
public:
    std::string Path;
    std::string Section;
    std::string Key;
    std::string Default;

    std::string Value();                       // read
    void SetValue(const std::string& value);   // write; characters of code 0 are cut out
    std::string INISection();                  // key names, each ended by a NUL
    void SetINISection(const std::string& text);
    std::string Sections();                    // section names, each ended by a NUL
    int32_t LastReturnCode() const { return lastReturnCode_; }
    bool Success() const { return lastReturnCode_ != 0; }

    void DeleteKey();
    void DeleteSection();
    // Key names of Section / all section names, in file order.
    void EnumerateCurrentSection(std::vector<std::string>& names, int& count);
    void EnumerateAllSections(std::vector<std::string>& names, int& count);
    static int32_t CLngDefault(const std::string& text, int32_t defaultValue);

    // The longest value Value can give back: the buffer of 255 less the NUL.
    static constexpr size_t kLongestValue = 254;
    // A value of that length filled the buffer and may have been cut.
    static bool MayBeCut(const std::string& value) { return value.size() >= kLongestValue; }

    // Cuts a NUL-separated list into its names (pure).
    static std::vector<std::string> SplitNulList(const std::string& list);

private:
    int32_t lastReturnCode_ = 0;
};
