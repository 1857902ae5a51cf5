// Folders of files that live as long as the object.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

namespace test {

class Folder {
public:
    Folder()
    {
        char name[] = "/tmp/vrno-XXXXXX";
        m_path = mkdtemp(name);
    }
    ~Folder() { std::filesystem::remove_all(m_path); }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;
    std::string path(const std::string& name = "") const { return m_path + "/" + name; }
    std::string put(const std::string& name, const std::string& content) const
    {
        std::ofstream(path(name), std::ios::binary) << content;
        return path(name);
    }
    void remove(const std::string& name) const { std::filesystem::remove(path(name)); }

private:
    std::string m_path;
};

// A card for the sample storage library, with the PIN 1234: "0010.item" is what it has for the code 0x0010.
class Card : public Folder {
public:
    Card()
    {
        for (const char* const name : {"VRNO_STORAGE", "VRNO_STORAGE_PUT"}) setenv(name, path().c_str(), 1);
        put("pin", "1234\n");
    }
    void close() const { setenv("VRNO_STORAGE_PUT", "/dev/null", 1); } // calls put nothing more on it
};

} // namespace test
