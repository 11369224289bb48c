#include "ormeldb/platform/opbbase.h"

#include <cstring>

char *XOS_StrToUpper(char *pcText) {
    if (pcText == nullptr)
        return nullptr;
    for (char *pc = pcText; *pc != '\0'; ++pc)
        if (*pc >= 'a' && *pc <= 'z')
            *pc = static_cast<char>(*pc - 'a' + 'A');
    return pcText;
}

char *LOC_Trimwhitespace(char *pcText) {
    constexpr char blanks[] = " \t\r\n\v\f";
    if (pcText == nullptr)
        return nullptr;
    char *first = pcText + std::strspn(pcText, blanks);
    char *end = first + std::strlen(first);
    while (end > first && std::strchr(blanks, end[-1]) != nullptr)
        --end;
    *end = '\0';
    return first;
}
