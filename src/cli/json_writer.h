#pragma once
// The JSON text of kdxctl's --json output: values written in order into one line,
// strings escaped, commas placed by the writer.
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace kdx::cli {

class JsonWriter {
public:
    JsonWriter& beginObject() { return open('{'); }
    JsonWriter& endObject() { return close('}'); }
    JsonWriter& beginArray() { return open('['); }
    JsonWriter& endArray() { return close(']'); }
    // The key of the next value in an object.
    JsonWriter& key(std::string_view name)
    {
        separate();
        quote(name);
        text_ += ':';
        afterKey_ = true;
        return *this;
    }
    JsonWriter& value(std::string_view s)
    {
        separate();
        quote(s);
        return *this;
    }
    JsonWriter& value(const char* s) { return value(std::string_view(s)); }
    JsonWriter& value(const std::string& s) { return value(std::string_view(s)); }
    JsonWriter& value(bool b) { return raw(b ? "true" : "false"); }
    JsonWriter& value(int64_t n) { return raw(std::to_string(n)); }
    JsonWriter& value(int n) { return value(static_cast<int64_t>(n)); }
    JsonWriter& value(uint64_t n) { return raw(std::to_string(n)); }
    JsonWriter& null() { return raw("null"); }
    // A string, or null when it is empty.
    JsonWriter& valueOrNull(std::string_view s) { return s.empty() ? null() : value(s); }

    // The text, with a final newline.
    std::string line() const { return text_ + "\n"; }

private:
    JsonWriter& open(char c)
    {
        separate();
        text_ += c;
        first_.push_back(true);
        return *this;
    }
    JsonWriter& close(char c)
    {
        text_ += c;
        first_.pop_back();
        return *this;
    }
    JsonWriter& raw(std::string_view s)
    {
        separate();
        text_ += s;
        return *this;
    }
    void separate()
    {
        if (afterKey_) {
            afterKey_ = false;
            return;
        }
        if (!first_.empty() && !first_.back()) text_ += ',';
        if (!first_.empty()) first_.back() = false;
    }
    void quote(std::string_view s)
    {
        static const char* const hex = "0123456789abcdef";
        text_ += '"';
        for (const char ch : s) {
            const auto c = static_cast<unsigned char>(ch);
            if (c == '"' || c == '\\') {
                text_ += '\\';
                text_ += ch;
            } else if (c == '\n') {
                text_ += "\\n";
            } else if (c == '\t') {
                text_ += "\\t";
            } else if (c < 0x20) {
                text_ += "\\u00";
                text_ += hex[c >> 4];
                text_ += hex[c & 15];
            } else {
                text_ += ch;
            }
        }
        text_ += '"';
    }

    std::string text_;
    std::vector<bool> first_; // per open object or array: nothing written in it yet
    bool afterKey_ = false;
};

} // namespace kdx::cli
