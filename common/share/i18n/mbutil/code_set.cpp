#include "current_code_set.h"
#include "locale_code_set.h"
#include "platform/locale_query.h"

unsigned char MBUTIL_Initialized = 0;
// Set until the code set is known: what reads it without initialising walks by characters.
unsigned char MBUTIL_I_Am_MultiByte = 1;
unsigned char MBUTIL_I_Am_Japanese = 0;

namespace zv {

int native_code_set = ZV_WESTERN;

} // namespace zv

int InitMbutil() {
    zv::adopt_environment_locale();
    return InitMbutilExt(zv::native_code_set_of_locale());
}

int InitMbutilExt(int code_set) {
    const int before = zv::native_code_set;
    zv::native_code_set = code_set;
    switch (code_set) {
    case ZV_JIS:
    case ZV_EUC:
    case ZV_SJIS:
        MBUTIL_I_Am_MultiByte = 1;
        MBUTIL_I_Am_Japanese = 1;
        break;
    case ZV_GB:
    case ZV_EUC_C:
    case ZV_BIG5:
    case ZV_EUC_H:
    case ZV_KSC_5601_87:
    case ZV_KSC_5601_92:
    case ZV_EUC_K:
        MBUTIL_I_Am_MultiByte = 1;
        MBUTIL_I_Am_Japanese = 0;
        break;
    default:
        MBUTIL_I_Am_MultiByte = 0;
        MBUTIL_I_Am_Japanese = 0;
        break;
    }
    MBUTIL_Initialized = 1;
    return before;
}

unsigned char mbIsMultiByte() {
    zv::ensure_initialised();
    return MBUTIL_I_Am_MultiByte;
}

unsigned char mbIsJapanese() {
    zv::ensure_initialised();
    return MBUTIL_I_Am_Japanese;
}

int sameLanguage(int a, int b) {
    enum class Language { japanese, korean, chinese, other };
    const auto language = [](int code_set) {
        switch (code_set) {
        case ZV_JIS:
        case ZV_EUC:
        case ZV_SJIS:
            return Language::japanese;
        case ZV_KSC_5601_87:
        case ZV_KSC_5601_92:
        case ZV_EUC_K:
            return Language::korean;
        case ZV_GB:
        case ZV_EUC_C:
        case ZV_BIG5:
        case ZV_EUC_H:
            return Language::chinese;
        default:
            return Language::other;
        }
    };
    return language(a) != Language::other && language(a) == language(b);
}
