// Text that is collected line by line and written as UTF-8 with plain line feeds, the same on every machine.
#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

class TextFile {
public:
    void Line(std::string_view line = {});
    // Throws std::runtime_error.
    void WriteTo(const std::wstring& path) const;

private:
    std::string m_text;
};

using XmlAttributes = std::vector<std::pair<const char*, std::string>>;

// Elements, indented by their depth. Text and attributes are escaped.
class XmlFile {
public:
    XmlFile();

    void Open(const std::string& tag, const XmlAttributes& attributes = {});
    void Close();
    void Empty(const std::string& tag, const XmlAttributes& attributes = {});
    void Leaf(const std::string& tag, const XmlAttributes& attributes, const std::string& text);

    void WriteTo(const std::wstring& path) const { m_file.WriteTo(path); }

private:
    std::string Start(const std::string& tag, const XmlAttributes& attributes) const;

    TextFile m_file;
    std::vector<std::string> m_open;
};
