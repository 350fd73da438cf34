#include "tools/schema_export/text_file.h"

#include <cstdio>
#include <stdexcept>

namespace {

constexpr size_t kIndent = 2;

std::string Escaped(std::string_view text) {
    std::string result;
    for (const char c : text) {
        switch (c) {
            case '&':
                result += "&amp;";
                break;
            case '<':
                result += "&lt;";
                break;
            case '>':
                result += "&gt;";
                break;
            case '"':
                result += "&quot;";
                break;
            default:
                result += c;
        }
    }
    return result;
}

}  // namespace

void TextFile::Line(std::string_view line) {
    m_text.append(line).append("\n");
}

void TextFile::WriteTo(const std::wstring& path) const {
    FILE* const file = _wfopen(path.c_str(), L"wb");
    if (file == nullptr) throw std::runtime_error("a file cannot be created");
    const size_t written = std::fwrite(m_text.data(), 1, m_text.size(), file);
    if (std::fclose(file) != 0 || written != m_text.size())
        throw std::runtime_error("a file cannot be written");
}

XmlFile::XmlFile() {
    m_file.Line(R"(<?xml version="1.0" encoding="utf-8"?>)");
}

void XmlFile::Open(const std::string& tag, const XmlAttributes& attributes) {
    m_file.Line(Start(tag, attributes) + ">");
    m_open.push_back(tag);
}

void XmlFile::Close() {
    const std::string tag = m_open.back();
    m_open.pop_back();
    m_file.Line(std::string(kIndent * m_open.size(), ' ') + "</" + tag + ">");
}

void XmlFile::Empty(const std::string& tag, const XmlAttributes& attributes) {
    m_file.Line(Start(tag, attributes) + "/>");
}

void XmlFile::Leaf(const std::string& tag, const XmlAttributes& attributes, const std::string& text) {
    m_file.Line(Start(tag, attributes) + ">" + Escaped(text) + "</" + tag + ">");
}

std::string XmlFile::Start(const std::string& tag, const XmlAttributes& attributes) const {
    std::string text = std::string(kIndent * m_open.size(), ' ') + "<" + tag;
    for (const auto& [name, value] : attributes)
        text += std::string(" ") + name + "=\"" + Escaped(value) + "\"";
    return text;
}
