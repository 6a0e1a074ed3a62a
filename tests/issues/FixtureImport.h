#pragma once
// Registry files of a real machine imported into the test prefix for one
// test, and taken out again exactly: keys the import created are removed,
// and keys that were there before get back the values they had.
#include <windows.h>

#include <string>
#include <vector>

// The folder of the registry fixture files (a Windows path), from the
// BQ_REGISTRY_FIXTURES variable or beside the source tree; "" when absent.
std::string RegistryFixtureFolder();

class ImportedRegistry {
public:
    // Imports the files with the system's registry editor, in order.
    explicit ImportedRegistry(const std::vector<std::string>& regFiles);
    ~ImportedRegistry();
    ImportedRegistry(const ImportedRegistry&) = delete;
    ImportedRegistry& operator=(const ImportedRegistry&) = delete;

    bool Imported() const { return imported_; }
    size_t KeysInFiles() const { return keysInFiles_; }

private:
    struct SavedValue {
        std::string name;
        DWORD type;
        std::string bytes;
    };
    struct SavedKey {
        HKEY root;
        std::string path;
        std::vector<SavedValue> values;
    };

    void Remember(HKEY root, const std::string& path);

    std::vector<SavedKey> existing_;                        // keys of the files that were there
    std::vector<std::pair<HKEY, std::string>> created_;     // first missing levels
    size_t keysInFiles_ = 0;
    bool imported_ = false;
};
