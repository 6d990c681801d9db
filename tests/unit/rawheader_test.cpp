#include "camera/recording/rawheader.h"
#include "tests/support/recordprinters.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

using namespace korvane::recording;
using namespace std::string_literals;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Pair;
using testing::SizeIs;

namespace {

// Bytes of words as they follow a header; the first is no "%".
const std::string body = "\x05\x80\x64\x60\x07\x00\x2C\x29"s;

std::string rest(const std::string& file, const RawHeader& header)
{
    return file.substr(header.bodyOffset);
}

TEST(RawHeader, ReadsWhatItsKeysTell)
{
    const std::string file = "% camera_integrator_name Somebody\n"
                             "% date 2023-03-29 16:37:46\n"
                             "% evt 3.0\n"
                             "% format EVT3;height=720;width=1280\n"
                             "% geometry 1280x720\n"
                             "% serial_number 00050423\n"
                             "% end\n"
        + body;
    const RawHeader header = parseRawHeader(file);
    EXPECT_EQ(header.error, "");
    EXPECT_EQ(header.encoding, EvtEncoding::Evt3);
    EXPECT_EQ(header.geometry, (Geometry{1280, 720}));
    EXPECT_EQ(header.serial, "00050423");
    EXPECT_EQ(header.legacyWordOrder, std::nullopt);
    EXPECT_EQ(header.value("date"), "2023-03-29 16:37:46");
    EXPECT_EQ(header.value("Date"), std::nullopt);
    EXPECT_EQ(header.value("end"), std::nullopt);
    EXPECT_EQ(rest(file, header), body);
}

TEST(RawHeader, KeepsEveryKeyInFileOrder)
{
    const RawHeader header
        = parseRawHeader("% evt 2.0\n% my_key a b  c\n% empty\n% my.key=1;2 value\n% evt 3.0\n% end\n");
    EXPECT_THAT(header.entries,
                ElementsAre(Pair("evt", "2.0"), Pair("my_key", "a b  c"), Pair("empty", ""),
                            Pair("my.key=1;2", "value"), Pair("evt", "3.0")));
}

TEST(RawHeader, TheLastOfRepeatedKeysHolds)
{
    const RawHeader header
        = parseRawHeader("% evt 2.0\n% geometry 10x10\n% evt 3.0\n% geometry 640x480\n% end\n");
    EXPECT_EQ(header.encoding, EvtEncoding::Evt3);
    EXPECT_EQ(header.value("evt"), "3.0");
    EXPECT_EQ(header.geometry, (Geometry{640, 480}));
}

TEST(RawHeader, EndsAtTheFirstPositionThatIsNoHeaderLine)
{
    for (const std::string& start : {"\x05\x80"s, "%\x80"s, "%%"s, "%\n"s, "\n% evt 3.0\n"s, ""s}) {
        const std::string file = "% evt 2.0\n% geometry 640x480\n" + start;
        const RawHeader header = parseRawHeader(file);
        EXPECT_EQ(header.encoding, EvtEncoding::Evt2);
        EXPECT_EQ(rest(file, header), start);
        EXPECT_THAT(header.entries, SizeIs(2));
    }
}

TEST(RawHeader, ABodyThatLooksLikeAHeaderBelongsToTheBody)
{
    // x = 37, OFF, and what follows it happen to read "% A" and a line feed.
    const std::string words = "% A\n% format EVT2\n" + body;
    const std::string file = "% format EVT3;width=640;height=480\n% end\n" + words;
    const RawHeader header = parseRawHeader(file);
    EXPECT_EQ(rest(file, header), words);
    EXPECT_EQ(header.encoding, EvtEncoding::Evt3);
}

TEST(RawHeader, AFileWithoutAHeaderIsAllBody)
{
    for (const std::string& file : {""s, "%"s, "\x00\x80"s, " % evt 2.0\n"s, "evt 2.0\n"s}) {
        const RawHeader header = parseRawHeader(file);
        EXPECT_EQ(header.bodyOffset, 0u);
        EXPECT_EQ(header.encoding, std::nullopt);
        EXPECT_FALSE(header.geometry.isValid());
        EXPECT_EQ(header.error, "");
        EXPECT_THAT(header.entries, IsEmpty());
    }
}

TEST(RawHeader, StripsCarriageReturnsAndBlanks)
{
    const std::string file
        = "% evt 2.0\r\n% format EVT2;height=480;width=640 \t\r\n%  geometry \t 640x480\r\n% end\r\n" + body;
    const RawHeader header = parseRawHeader(file);
    EXPECT_EQ(header.encoding, EvtEncoding::Evt2);
    EXPECT_EQ(header.geometry, (Geometry{640, 480}));
    EXPECT_EQ(header.value("geometry"), "640x480");
    EXPECT_EQ(rest(file, header), body);
}

TEST(RawHeader, ANulEndsALineThatAnotherFollows)
{
    const std::string file = "% date 2020-09-25 07:48:31\0% evt 3.0\0% geometry 1280x720\n% end\n"s + body;
    const RawHeader header = parseRawHeader(file);
    EXPECT_EQ(header.encoding, EvtEncoding::Evt3);
    EXPECT_EQ(header.geometry, (Geometry{1280, 720}));
    EXPECT_EQ(header.value("date"), "2020-09-25 07:48:31");
    EXPECT_EQ(rest(file, header), body);
}

TEST(RawHeader, ANulBesideALineFeedIsABlank)
{
    const std::string file = "% evt 2.1\0\n% geometry 304x240\0\r\n% end\0\n"s + body;
    const RawHeader header = parseRawHeader(file);
    EXPECT_EQ(header.encoding, EvtEncoding::Evt21);
    EXPECT_EQ(header.geometry, (Geometry{304, 240}));
    EXPECT_EQ(rest(file, header), body);
}

TEST(RawHeader, ANulAfterTheEndMarkEndsTheHeader)
{
    const std::string file = "% evt 2.0\n% end\0"s + body;
    const RawHeader header = parseRawHeader(file);
    EXPECT_EQ(header.encoding, EvtEncoding::Evt2);
    EXPECT_EQ(rest(file, header), body);
}

TEST(RawHeader, WordsAreNoHeaderLine)
{
    // A body without a header in front whose first bytes are "% ": control characters betray it.
    for (const std::string& file : {"% A\x01 b\n"s, "% \x05\x80\x64\x60\n"s, "% A\x7F\n"s}) {
        const RawHeader header = parseRawHeader(file + body);
        EXPECT_EQ(header.bodyOffset, 0u);
        EXPECT_THAT(header.entries, IsEmpty());
    }
}

TEST(RawHeader, LettersBeyondAsciiAreText)
{
    const RawHeader header = parseRawHeader("% operator M\xC3\xBCller\n% note \xE4\n% evt 3.0\n% end\n");
    EXPECT_EQ(header.value("operator"), "M\xC3\xBCller");
    EXPECT_EQ(header.encoding, EvtEncoding::Evt3);
}

TEST(RawHeader, AcceptsALastLineWithoutALineFeed)
{
    EXPECT_EQ(parseRawHeader("% evt 2.0\n% geometry 640x480").geometry, (Geometry{640, 480}));
    const RawHeader ended = parseRawHeader("% evt 2.0\n% end");
    EXPECT_EQ(ended.bodyOffset, 15u);
    EXPECT_THAT(ended.entries, SizeIs(1));
}

TEST(RawHeader, ALineMayTakeOneKibibyte)
{
    const std::string longest = "% note "s + std::string(RawHeader::maximumLine - 7, 'a') + "\n";
    EXPECT_THAT(parseRawHeader("% evt 2.0\n" + longest + "% geometry 640x480\n% end\n").entries, SizeIs(3));

    const std::string tooLong = "% note "s + std::string(RawHeader::maximumLine - 6, 'a') + "\n";
    const std::string file = "% evt 2.0\n" + tooLong + "% end\n";
    const RawHeader header = parseRawHeader(file);
    EXPECT_THAT(header.entries, SizeIs(1));
    EXPECT_EQ(rest(file, header), tooLong + "% end\n");
    // Without a line feed it is body even at the end of the file.
    EXPECT_THAT(parseRawHeader("% evt 2.0\n% note "s + std::string(2000, 'a')).entries, SizeIs(1));
}

TEST(RawHeader, TakesSixtyFourKibibytesAtMost)
{
    std::string file = "% evt 2.0\n";
    while (file.size() < 70000)
        file += "% note "s + std::string(92, 'x') + "\n";
    file += "% end\n";
    const RawHeader header = parseRawHeader(file);
    EXPECT_EQ(header.encoding, EvtEncoding::Evt2);
    EXPECT_LE(header.bodyOffset, RawHeader::maximumSize);
    EXPECT_GT(header.bodyOffset, RawHeader::maximumSize - 100);
    EXPECT_EQ(rest(file, header).substr(0, 7), "% note ");
}

TEST(RawHeader, AHeaderOfExactlySixtyFourKibibytesIsWhole)
{
    std::string file = "% evt 2.0\n";
    while (file.size() + 100 < RawHeader::maximumSize)
        file += "% note "s + std::string(42, 'x') + "\n";
    file += "% note ";
    file += std::string(RawHeader::maximumSize - 7 - file.size(), 'y') + "\n% end\n";
    ASSERT_EQ(file.size(), RawHeader::maximumSize);
    const RawHeader header = parseRawHeader(file + body);
    EXPECT_EQ(header.bodyOffset, RawHeader::maximumSize);
    EXPECT_EQ(header.value("end"), std::nullopt);
}

struct EncodingCase
{
    const char* line;
    EvtEncoding encoding;
};

TEST(RawHeader, KnowsTheSpellingsOfEachEncoding)
{
    const EncodingCase cases[]{
        {"format EVT2", EvtEncoding::Evt2},
        {"format EVT2;height=1;width=2", EvtEncoding::Evt2},
        {"format EVT2.0", EvtEncoding::Evt2},
        {"format EVT20", EvtEncoding::Evt2},
        {"format evt2", EvtEncoding::Evt2},
        {"format EVT21", EvtEncoding::Evt21},
        {"format EVT2.1;endianness=little", EvtEncoding::Evt21},
        {"format evt21", EvtEncoding::Evt21},
        {"format Evt2.1", EvtEncoding::Evt21},
        {"format EVT3", EvtEncoding::Evt3},
        {"format EVT3.0", EvtEncoding::Evt3},
        {"format evt3.0;width=1;height=1", EvtEncoding::Evt3},
        {"format  EVT3 ; width = 640 ; height = 480 ", EvtEncoding::Evt3},
        {"evt 2.0", EvtEncoding::Evt2},
        {"evt 2", EvtEncoding::Evt2},
        {"evt 2.1", EvtEncoding::Evt21},
        {"evt 3.0", EvtEncoding::Evt3},
        {"evt 3", EvtEncoding::Evt3},
    };
    for (const auto& one : cases) {
        const RawHeader header = parseRawHeader("% "s + std::string(one.line) + "\n% end\n");
        EXPECT_EQ(header.encoding, one.encoding) << one.line;
        EXPECT_EQ(header.error, "") << one.line;
    }
}

TEST(RawHeader, RefusesFormatsItDoesNotKnowByName)
{
    for (const char* name : {"EVT4", "EVT1", "HISTO3D", "DIFF3D", "EVT", "EVT22", "EVT2_1", "3"}) {
        const RawHeader header
            = parseRawHeader("% format "s + std::string(name) + ";width=640;height=480\n% end\n");
        EXPECT_EQ(header.encoding, std::nullopt) << name;
        EXPECT_THAT(header.error, HasSubstr("\""s + std::string(name) + "\""));
    }
    EXPECT_THAT(parseRawHeader("% evt 4.0\n% end\n").error, HasSubstr("\"4.0\""));
    EXPECT_THAT(parseRawHeader("% format EVT4\n% evt 3.0\n% end\n").error, HasSubstr("EVT4"));
}

TEST(RawHeader, RefusesAFormatAndAVersionThatContradictEachOtherWithBothValues)
{
    const RawHeader header = parseRawHeader("% evt 2.0\n% format EVT3;width=640;height=480\n% end\n");
    EXPECT_THAT(header.error, HasSubstr("EVT3"));
    EXPECT_THAT(header.error, HasSubstr("2.0"));
    EXPECT_NE(parseRawHeader("% evt 2.0\n% format EVT21\n% end\n").error, "");
    EXPECT_NE(parseRawHeader("% evt 3.0\n% format EVT21\n% end\n").error, "");
    EXPECT_EQ(parseRawHeader("% evt 2.1\n% format EVT21\n% end\n").error, "");
    EXPECT_EQ(parseRawHeader("% evt 3.0\n% format evt3\n% end\n").error, "");
}

TEST(RawHeader, AFormatCountsMoreThanAVersionThatSaysNothing)
{
    const RawHeader header = parseRawHeader("% evt unknown\n% format EVT3\n% end\n");
    EXPECT_EQ(header.encoding, EvtEncoding::Evt3);
    EXPECT_EQ(header.error, "");
}

TEST(RawHeader, ReadsFormatOptionsInAnyOrder)
{
    const RawHeader header
        = parseRawHeader("% format EVT21;width=640;x;endianness=legacy;what=ever;;height=480;\n% end\n");
    EXPECT_EQ(header.encoding, EvtEncoding::Evt21);
    EXPECT_EQ(header.geometry, (Geometry{640, 480}));
    EXPECT_EQ(header.legacyWordOrder, true);
}

TEST(RawHeader, ReadsTheWordOrderFromItsKeyOrFromAnOption)
{
    EXPECT_EQ(parseRawHeader("% evt 2.1\n% endianness legacy\n% end\n").legacyWordOrder, true);
    EXPECT_EQ(parseRawHeader("% endianness little\n% evt 2.1\n% end\n").legacyWordOrder, false);
    EXPECT_EQ(parseRawHeader("% evt 2.1\n% endianness Legacy\r\n% end\n").legacyWordOrder, true);
    EXPECT_EQ(parseRawHeader("% format EVT21;endianness=little\n% end\n").legacyWordOrder, false);
    EXPECT_EQ(parseRawHeader("% evt 2.1\n% endianness big\n% end\n").legacyWordOrder, std::nullopt);
    EXPECT_EQ(parseRawHeader("% evt 2.1\n% end\n").legacyWordOrder, std::nullopt);
}

struct GeometryCase
{
    const char* lines;
    Geometry geometry;
};

TEST(RawHeader, TakesTheGeometryFromTheFormatElseFromItsTwin)
{
    const GeometryCase cases[]{
        {"% format EVT3;height=720;width=1280\n", {1280, 720}},
        {"% geometry 640x480\n", {640, 480}},
        {"% geometry 640X480\n", {640, 480}},
        {"% geometry 640 x 480\n", {640, 480}},
        {"% geometry 2048x2048\n", {2048, 2048}},
        {"% geometry 640x480\n% format EVT3;height=720;width=1280\n", {1280, 720}},
        {"% format EVT3;height=720\n% geometry 640x480\n", {640, 480}},
        {"% format EVT3;width=0;height=0\n% geometry 640x480\n", {640, 480}},
        {"% format EVT3;width=640;height=nonsense\n% geometry 304x240\n", {304, 240}},
        {"% Width 640\n% Height 480\n", {0, 0}},
        {"% geometry 640\n", {0, 0}},
        {"% geometry x480\n", {0, 0}},
        {"% geometry 640x\n", {0, 0}},
        {"% geometry 0x480\n", {0, 0}},
        {"% geometry 2049x480\n", {0, 0}},
        {"% geometry -640x480\n", {0, 0}},
        {"% geometry 640x480x3\n", {0, 0}},
        {"% geometry 640x480 pixels\n", {0, 0}},
        {"% geometry 99999999999999999999x480\n", {0, 0}},
        {"% geometry 65537x480\n", {0, 0}},
        {"% geometry\n", {0, 0}},
        {"", {0, 0}},
    };
    for (const auto& one : cases)
        EXPECT_EQ(parseRawHeader(one.lines + "% end\n"s).geometry, one.geometry) << one.lines;
}

TEST(RawHeader, OtherKeysMeanNothing)
{
    const RawHeader header
        = parseRawHeader("% Format EVT3\n% EVT 2.0\n% END\n% end of story\n% geom 1x1\n% \n% end\n");
    EXPECT_EQ(header.encoding, std::nullopt);
    EXPECT_EQ(header.error, "");
    EXPECT_FALSE(header.geometry.isValid());
    EXPECT_THAT(header.entries, SizeIs(6));
}

} // namespace
