#pragma once

#include "onvif/Client.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace onvifclient
{
struct tagChannel;

/// How a word of a record stands in the imaging service's settings.
enum class eUnit : unsigned char
{
    Percent,    ///< of the device's range
    Hundredths, ///< of the device's unit
    Whole,      ///< as it is
    Opening,    ///< ten-thousandths of the range, the other way round: ONVIF has what the iris takes away
    Duration,   ///< seconds, a duration there
    Names,      ///< one of these, in the order of the interface's values
};

/// Where it stands.
struct tagImagingPlace
{
    char const* szPath;   ///< in ImagingSettings
    char const* szOption; ///< in the options: its range, or for names the elements that list them
    eUnit eAs = eUnit::Percent;
    char const* szNames = "";
};

/// A word that is written.
struct tagImagingWord
{
    tagImagingPlace tAt;
    uint32_t dwBefore = 0;
    uint32_t dwAfter = 0;
};

/// A source's settings, and what they may be.
struct tagSettings
{
    onvif::CAnswer tSettings;
    onvif::CAnswer tOptions;
    pugi::xml_node Now() const { return onvif::Child(tSettings.Body(), "ImagingSettings"); }
    pugi::xml_node Options() const { return onvif::Child(tOptions.Body(), "ImagingOptions"); }
};

/// The element that names a source in a request.
std::string SourceToken(tagChannel const& tChannel);
int Ask(onvif::CClient& tClient, tagChannel const& tChannel, tagSettings& t);

uint32_t ReadWord(tagImagingPlace const& tAt, tagSettings const& t);
/// A word as the device wants it; nothing: it takes no such value.
std::optional<std::string> WordText(tagImagingPlace const& tAt, tagSettings const& t, uint32_t dwValue);
/// Sends the words that have changed, with the groups that they stand in. atWords: all of a record.
int WriteWords(onvif::CClient& tClient, tagChannel const& tChannel, tagSettings const& tSettings,
               std::vector<tagImagingWord> const& atWords);

/// A word of a record, and its place.
template <class Record>
struct tagField
{
    uint32_t Record::*pWord;
    tagImagingPlace tAt;
};
template <class Record>
using Fields = std::span<tagField<Record> const>;

template <class Record>
void ReadFields(Fields<Record> atFields, tagSettings const& tSettings, Record& t)
{
    for (tagField<Record> const& tField : atFields)
    {
        t.*tField.pWord = ReadWord(tField.tAt, tSettings);
    }
}

template <class Record>
int WriteFields(onvif::CClient& tClient, tagChannel const& tChannel, Fields<Record> atFields,
                tagSettings const& tSettings, Record const& tBefore, Record const& tAfter)
{
    std::vector<tagImagingWord> atWords;
    for (tagField<Record> const& tField : atFields)
    {
        atWords.push_back({tField.tAt, tBefore.*tField.pWord, tAfter.*tField.pWord});
    }
    return WriteWords(tClient, tChannel, tSettings, atWords);
}
} // namespace onvifclient
