#ifndef ZVUTIL_FUZZ_MAIL_MODEL_H
#define ZVUTIL_FUZZ_MAIL_MODEL_H

#include <cctype>
#include <cstdio>
#include <string>

#include "models/strings_model.h"

namespace test {

inline std::string model_of_encoder(const std::string& text) {
    std::string out;
    size_t line = 0;
    for (const char c : text) {
        char token[4] = {c};
        if (static_cast<signed char>(c) <= 0x20 || c == 0x7F || c == '=')
            std::snprintf(token, sizeof token, "=%02X", static_cast<unsigned char>(c));
        out += token;
        if (out.size() - line >= 50)
            line = out.append("=\n\r").size();
    }
    return out;
}

// As a caller sees it: up to the first zero byte, which "=00" gives.
inline std::string model_of_decoder(const std::string& text) {
    const auto is_digit = [](char c) { return std::isxdigit(static_cast<unsigned char>(c)) != 0; };
    std::string out;
    size_t i = 0;
    const auto next = [&] { return i < text.size() ? text[i++] : '\0'; };
    for (char c = next(); c != '\0' && c != '\n' && c != '\r'; c = next()) {
        const char c1 = c == '=' ? next() : c;
        const char c2 = c == '=' && is_digit(c1) ? next() : '\0';
        if (c != '=')
            out += c == '\t' || (c >= 0x20 && c < 0x7F) ? std::string(1, c) : "";
        else if (is_digit(c1) && is_digit(c2))
            out += static_cast<char>(std::stoi(std::string{c1, c2}, nullptr, 16));
        else if (is_digit(c1))
            out += {c1, c2};
        else if (c1 != '\n' && c1 != '\r')
            out += {c1 == '\0' ? '\0' : '=', c1};
    }
    return out.c_str();
}

inline constexpr char kBase64[] =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

// Takes one group of three bytes after the other.
inline std::string model_of_base64_words(const std::string& text, const std::string& charset) {
    size_t i = std::min(text.find('\x1B'), text.size());
    const std::string opening = "=?" + charset + "?B?";
    std::string out = text.substr(0, i) + (i < text.size() ? opening : "");
    size_t line = 0;
    const auto begin_next = [&] {
        line = out.append("?=\n \t").size() - 1; // space and TAB count as one column
        out += opening;
    };
    std::string remembered;
    for (bool fresh = true; i < text.size();) {
        if (text[i] == '\x1B' && !fresh) {
            begin_next();
            remembered.clear();
        }
        const std::string three = text.substr(i, 3), group = three.substr(0, three.find('\x1B', 1));
        const bool is_cut = group.size() < three.size();
        i += group.size();
        unsigned bits = 0;
        for (size_t k = 0; k < 3; ++k)
            bits = bits << 8 | (k < group.size() ? static_cast<unsigned char>(group[k]) : 0);
        std::string digits;
        for (int shift = 18; shift >= 0; shift -= 6)
            digits += kBase64[bits >> shift & 63];
        remembered = remembered.empty() ? digits : remembered;
        out += digits.replace(group.size() + 1, 4, 3 - group.size(), '=');
        fresh = is_cut || out.size() - line >= 72;
        if (fresh) {
            begin_next();
            out += remembered;
        }
    }
    return out.size() > text.size() ? out + "?=" : out;
}

// Pieces of whole characters for JIS, lines of quoted-printable for the others.
inline std::string model_of_subject(const std::string& subject, int mail_code_set, int code_set) {
    const std::string fold = "\n \t", charset = mbGetMIMECharset(mail_code_set);
    std::string out;
    for (size_t i = 0; mail_code_set == ZV_JIS && i < subject.size();) {
        const std::string piece = cut(subject.substr(i, 24), 20);
        out += i == 0 ? "" : fold;
        out += model_of_base64_words(converted(piece, code_set, mail_code_set), charset);
        i += piece.size();
    }
    if (mail_code_set == ZV_JIS || subject.empty())
        return out;
    const std::string opening = "=?" + charset + "?Q?";
    out = opening + model_of_encoder(converted(subject, code_set, mail_code_set));
    if (out.ends_with("\r"))
        out.resize(out.size() - 3);
    for (size_t at = 0; (at = out.find("=\n\r", at)) != out.npos;)
        out.replace(at, 3, "?=" + fold + opening);
    return out + "?=";
}

} // namespace test

#endif
