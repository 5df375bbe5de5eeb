#include "scanner_choice.h"

int mblenExt(const char* s, unsigned n, int code_set) {
    return zv::with_scanner(code_set, [&](auto scanner) {
        using Scanner = decltype(scanner);
        if (Scanner::kLongest == 1)
            return 1;
        return s == nullptr || n == 0 ? 0 : zv::scan<Scanner>(zv::as_bytes(s), n);
    });
}

int mb_mblen(const char* s, unsigned n) {
    return mblenExt(s, n, zv::current_code_set());
}

int isleadbyteExt(int byte, int code_set) {
    if (byte < 0 || byte > 0xFF)
        return 0;
    return zv::with_scanner(code_set, [&](auto scanner) {
        return decltype(scanner)::announced(static_cast<zv::Byte>(byte)) > 1;
    });
}

int mb_isleadbyte(int byte) {
    return isleadbyteExt(byte, zv::current_code_set());
}

int mbmaxcharlenExt(int code_set) {
    return zv::with_scanner(code_set, [](auto scanner) { return decltype(scanner)::kLongest; });
}

int mbmaxcharlen() {
    return mbmaxcharlenExt(zv::current_code_set());
}

int ismbcprintInSJIS(int byte) {
    return (byte >= 0 && byte < 0x80) || (byte >= 0xA1 && byte <= 0xDF);
}

int ismbcprint(int byte) {
    return zv::current_code_set() == ZV_SJIS ? ismbcprintInSJIS(byte) : byte >= 0 && byte < 0x80;
}

int mbbytesinchartype(const char* s, int code_set) {
    return zv::with_scanner(code_set, [&](auto scanner) {
        using Scanner = decltype(scanner);
        return s == nullptr ? 1 : zv::step<Scanner>(zv::as_bytes(s));
    });
}

int mbbytesinchar(const char* s) {
    return mbbytesinchartype(s, zv::current_code_set());
}
