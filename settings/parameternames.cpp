#include "settings/parameternames.h"

#include <algorithm>
#include <locale>

std::string toDisplayName(std::string name)
{
    const std::locale& ascii = std::locale::classic();
    bool startOfWord = true;
    for (char& character : name) {
        if (character == '_' || std::isspace(character, ascii)) {
            startOfWord = true;
        } else if (startOfWord && std::isalpha(character, ascii)) {
            character = std::toupper(character, ascii);
            startOfWord = false;
        }
    }
    std::replace(name.begin(), name.end(), '_', ' ');
    return name;
}

std::string toParameterKey(std::string displayName)
{
    const std::locale& ascii = std::locale::classic();
    for (char& character : displayName)
        character = std::tolower(character, ascii);
    std::replace(displayName.begin(), displayName.end(), ' ', '_');
    return displayName;
}
