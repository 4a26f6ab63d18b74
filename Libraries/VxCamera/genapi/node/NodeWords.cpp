#include "VxCamera/genapi/node/NodeWords.h"

#include <algorithm>
#include <array>
#include <cctype>

namespace genapi {

namespace {

template <typename T>
struct Word {
    std::string_view text;
    T value;
};

constexpr std::array kAccessModes{
    Word<AccessMode>{"RO", AccessMode::ReadOnly},
    Word<AccessMode>{"WO", AccessMode::WriteOnly},
    Word<AccessMode>{"RW", AccessMode::ReadWrite},
};

constexpr std::array kVisibilities{
    Word<Visibility>{"Beginner", Visibility::Beginner},
    Word<Visibility>{"Expert", Visibility::Expert},
    Word<Visibility>{"Guru", Visibility::Guru},
    Word<Visibility>{"Invisible", Visibility::Invisible},
};

constexpr std::array kRepresentations{
    Word<Representation>{"Linear", Representation::Linear},
    Word<Representation>{"Logarithmic", Representation::Logarithmic},
    Word<Representation>{"Boolean", Representation::Boolean},
    Word<Representation>{"PureNumber", Representation::PureNumber},
    Word<Representation>{"HexNumber", Representation::HexNumber},
    Word<Representation>{"IPV4Address", Representation::Ipv4Address},
    Word<Representation>{"MACAddress", Representation::MacAddress},
};

constexpr std::array kDisplayNotations{
    Word<DisplayNotation>{"Automatic", DisplayNotation::Automatic},
    Word<DisplayNotation>{"Fixed", DisplayNotation::Fixed},
    Word<DisplayNotation>{"Scientific", DisplayNotation::Scientific},
};

constexpr std::array kYesNo{
    Word<bool>{"yes", true}, Word<bool>{"true", true},   Word<bool>{"1", true},
    Word<bool>{"no", false}, Word<bool>{"false", false}, Word<bool>{"0", false},
};

template <typename Table>
auto Find(const Table& table, std::string_view word) -> std::optional<decltype(table[0].value)>
{
    for (const auto& entry : table)
        if (entry.text == word)
            return entry.value;
    return std::nullopt;
}

} // namespace

std::optional<AccessMode> ParseAccessMode(std::string_view word)
{
    return Find(kAccessModes, word);
}

std::optional<Visibility> ParseVisibility(std::string_view word)
{
    return Find(kVisibilities, word);
}

std::optional<Representation> ParseRepresentation(std::string_view word)
{
    return Find(kRepresentations, word);
}

std::optional<DisplayNotation> ParseDisplayNotation(std::string_view word)
{
    return Find(kDisplayNotations, word);
}

std::optional<bool> ParseYesNo(std::string_view word)
{
    const auto isSame = [](char lower, char c) {
        return lower == std::tolower(static_cast<unsigned char>(c));
    };
    for (const auto& entry : kYesNo)
        if (std::equal(entry.text.begin(), entry.text.end(), word.begin(), word.end(), isSame))
            return entry.value;
    return std::nullopt;
}

} // namespace genapi
