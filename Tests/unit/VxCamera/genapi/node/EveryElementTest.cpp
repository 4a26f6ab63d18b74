#include "VxCamera/genapi/map/NodeMap.h"

#include "support/genapi/NodeMapFixture.h"

#include <algorithm>
#include <iterator>
#include <string>
#include <vector>

#include "VxCamera/genapi/node/TextForm.h"

namespace genapi {
namespace {

/// One small description for each kind of node and element. The node asked is "N"; what others need stands in
/// kOthers, and the camera's memory is
///
///   0x00  12 34 56 78 9A BC DE F0
///   0x10  FE FF
///   0x20  3F C0 00 00               1.5 as a big-endian float
///   0x28  3F F8 00 00 00 00 00 00   1.5 as a big-endian double
///   0x40  'H' 'i' 00 'x'
///   0x50  00 00 00 0F
struct Row {
    const char* name;
    const char* nodes;
    AccessMode access;
    const char* text;   ///< the value; empty where it cannot be read
    const char* limits; ///< minimum, maximum, increment; empty for a node without
};

void PrintTo(const Row& row, std::ostream* out)
{
    *out << row.name;
}

constexpr const char* kOthers =
    "<Integer Name=\"Zero\"><Value>0</Value></Integer><Integer Name=\"One\"><Value>1</Value></Integer>"
    "<Integer Name=\"Two\"><Value>2</Value></Integer><Integer Name=\"Four\"><Value>4</Value></Integer>"
    "<Float Name=\"Half\"><Value>0.5</Value></Float>"
    "<IntReg Name=\"Word\"><Address>0</Address><Length>4</Length><AccessMode>RW</AccessMode>"
    "<Endianess>BigEndian</Endianess></IntReg>"
    "<IntReg Name=\"Byte\"><Address>0</Address><Length>1</Length><AccessMode>RW</AccessMode></IntReg>"
    "<IntReg Name=\"Secret\"><Address>0</Address><Length>1</Length><AccessMode>WO</AccessMode></IntReg>"
    "<StringReg "
    "Name=\"Text\"><Address>0x40</Address><Length>4</Length><AccessMode>RW</AccessMode></StringReg>";

using enum AccessMode;

constexpr const char* kAll = "-9223372036854775808 9223372036854775807 1";
constexpr const char* kAllFloats = "-1.7976931348623157e+308 1.7976931348623157e+308 0";
constexpr const char* kSingles = "-3.4028234663852886e+38 3.4028234663852886e+38 0";

const Row kRows[] = {
    {"IntegerValue", "<Integer Name=\"N\"><Value>5</Value></Integer>", ReadWrite, "5", kAll},
    {"IntegerValueHex", "<Integer Name=\"N\"><Value>0xFFFFFFFFFFFFFFFF</Value></Integer>", ReadWrite, "-1",
     kAll},
    {"IntegerPValue", "<Integer Name=\"N\"><pValue>Word</pValue></Integer>", ReadWrite, "305419896",
     "0 4294967295 1"},
    {"IntegerPValueCopy", "<Integer Name=\"N\"><pValue>Word</pValue><pValueCopy>One</pValueCopy></Integer>",
     ReadWrite, "305419896", "0 4294967295 1"},
    {"IntegerValueIndexed",
     "<Integer Name=\"N\"><pIndex>Two</pIndex><ValueIndexed Index=\"1\">10</ValueIndexed><ValueIndexed "
     "Index=\"2\">20</ValueIndexed></Integer>",
     ReadWrite, "20", kAll},
    {"IntegerPValueIndexed",
     "<Integer Name=\"N\"><pIndex>Two</pIndex><pValueIndexed Index=\"2\">Byte</pValueIndexed></Integer>",
     ReadWrite, "18", "0 255 1"},
    {"IntegerValueDefault",
     "<Integer Name=\"N\"><pIndex>Two</pIndex><ValueIndexed "
     "Index=\"1\">10</ValueIndexed><ValueDefault>7</ValueDefault></Integer>",
     ReadWrite, "7", kAll},
    {"IntegerPValueDefault",
     "<Integer Name=\"N\"><pIndex>Two</pIndex><ValueIndexed "
     "Index=\"1\">10</ValueIndexed><pValueDefault>Byte</pValueDefault></Integer>",
     ReadWrite, "18", "0 255 1"},
    {"IntegerMinMaxInc",
     "<Integer Name=\"N\"><Value>5</Value><Min>-3</Min><Max>9</Max><Inc>4</Inc></Integer>", ReadWrite, "5",
     "-3 9 4"},
    {"IntegerPMinPMaxPInc",
     "<Integer Name=\"N\"><Value>2</Value><pMin>Zero</pMin><pMax>Four</pMax><pInc>Two</pInc></Integer>",
     ReadWrite, "2", "0 4 2"},
    {"IntegerOverAFloat", "<Integer Name=\"N\"><pValue>Half</pValue></Integer>", ReadWrite, "1",
     "-9223372036854775808 9223372036854775807 1"},
    {"IntegerValidValueSet",
     "<Integer Name=\"N\"><Value>4</Value><ValidValueSet>1;2;4</ValidValueSet></Integer>", ReadWrite, "4",
     kAll},
    {"RepresentationPureNumber",
     "<Integer Name=\"N\"><pValue>Word</pValue><Representation>PureNumber</Representation></Integer>",
     ReadWrite, "305419896", "0 4294967295 1"},
    {"RepresentationBoolean",
     "<Integer Name=\"N\"><Value>1</Value><Representation>Boolean</Representation></Integer>", ReadWrite, "1",
     kAll},
    {"RepresentationHexNumber",
     "<Integer Name=\"N\"><pValue>Word</pValue><Representation>HexNumber</Representation></Integer>",
     ReadWrite, "0x12345678", "0 4294967295 1"},
    {"RepresentationIPV4Address",
     "<Integer Name=\"N\"><pValue>Word</pValue><Representation>IPV4Address</Representation></Integer>",
     ReadWrite, "18.52.86.120", "0 4294967295 1"},
    {"RepresentationMACAddress",
     "<IntReg "
     "Name=\"N\"><Address>0</Address><Length>6</Length><Endianess>BigEndian</"
     "Endianess><Representation>MACAddress</Representation></IntReg>",
     ReadOnly, "12:34:56:78:9a:bc", "0 281474976710655 1"},

    {"PIsImplemented", "<Integer Name=\"N\"><Value>5</Value><pIsImplemented>Zero</pIsImplemented></Integer>",
     NotImplemented, "", kAll},
    {"PIsAvailable", "<Integer Name=\"N\"><Value>5</Value><pIsAvailable>Zero</pIsAvailable></Integer>",
     NotAvailable, "", kAll},
    {"PIsLocked", "<Integer Name=\"N\"><Value>5</Value><pIsLocked>One</pIsLocked></Integer>", ReadOnly, "5",
     kAll},
    {"ImposedAccessModeRO",
     "<Integer Name=\"N\"><Value>5</Value><ImposedAccessMode>RO</ImposedAccessMode></Integer>", ReadOnly, "5",
     kAll},
    {"ImposedAccessModeWO",
     "<Integer Name=\"N\"><Value>5</Value><ImposedAccessMode>WO</ImposedAccessMode></Integer>", WriteOnly, "",
     kAll},

    {"IntRegWithoutMore", "<IntReg Name=\"N\"><Address>0</Address><Length>2</Length></IntReg>", ReadOnly,
     "13330", "0 65535 1"},
    {"IntRegAccessModeRW",
     "<IntReg Name=\"N\"><Address>0</Address><Length>1</Length><AccessMode>RW</AccessMode></IntReg>",
     ReadWrite, "18", "0 255 1"},
    {"IntRegAccessModeWO",
     "<IntReg Name=\"N\"><Address>0</Address><Length>1</Length><AccessMode>WO</AccessMode></IntReg>",
     WriteOnly, "", "0 255 1"},
    {"IntRegBigEndian",
     "<IntReg Name=\"N\"><Address>0</Address><Length>4</Length><Endianess>BigEndian</Endianess></IntReg>",
     ReadOnly, "305419896", "0 4294967295 1"},
    {"IntRegLittleEndian",
     "<IntReg Name=\"N\"><Address>0</Address><Length>4</Length><Endianess>LittleEndian</Endianess></IntReg>",
     ReadOnly, "2018915346", "0 4294967295 1"},
    {"IntRegSigned",
     "<IntReg Name=\"N\"><Address>0x10</Address><Length>2</Length><Sign>Signed</Sign></IntReg>", ReadOnly,
     "-2", "-32768 32767 1"},
    {"IntRegUnsigned",
     "<IntReg Name=\"N\"><Address>0x10</Address><Length>2</Length><Sign>Unsigned</Sign></IntReg>", ReadOnly,
     "65534", "0 65535 1"},
    {"IntRegOf3Bytes",
     "<IntReg Name=\"N\"><Address>0</Address><Length>3</Length><Endianess>BigEndian</Endianess></IntReg>",
     ReadOnly, "1193046", "0 16777215 1"},
    {"IntRegOf8Bytes",
     "<IntReg Name=\"N\"><Address>0</Address><Length>8</Length><Endianess>BigEndian</Endianess></IntReg>",
     ReadOnly, "1311768467463790320", "0 9223372036854775807 1"},
    {"RegisterPLength", "<IntReg Name=\"N\"><Address>0</Address><pLength>Two</pLength></IntReg>", ReadOnly,
     "13330", "0 65535 1"},
    {"RegisterAddressTwice",
     "<IntReg Name=\"N\"><Address>1</Address><Address>0x3</Address><Length>1</Length></IntReg>", ReadOnly,
     "154", "0 255 1"},
    {"RegisterPAddress",
     "<IntReg Name=\"N\"><Address>1</Address><pAddress>Two</pAddress><Length>1</Length></IntReg>", ReadOnly,
     "120", "0 255 1"},
    {"RegisterIntSwissKnife",
     "<IntReg Name=\"N\"><IntSwissKnife><pVariable "
     "Name=\"X\">Two</pVariable><Formula>X*3</Formula></IntSwissKnife><Length>1</Length></IntReg>",
     ReadOnly, "222", "0 255 1"},
    {"RegisterPIndexOffset",
     "<IntReg Name=\"N\"><Address>1</Address><pIndex Offset=\"2\">Two</pIndex><Length>1</Length></IntReg>",
     ReadOnly, "188", "0 255 1"},
    {"RegisterPIndexPOffset",
     "<IntReg Name=\"N\"><pIndex pOffset=\"Four\">One</pIndex><Length>1</Length></IntReg>", ReadOnly, "154",
     "0 255 1"},
    {"RegisterPIndexAlone",
     "<IntReg Name=\"N\"><pIndex>One</pIndex><Length>2</Length><Endianess>BigEndian</Endianess></IntReg>",
     ReadOnly, "22136", "0 65535 1"},
    {"RegisterPPort",
     "<IntReg Name=\"N\"><Address>0</Address><Length>1</Length><pPort>Device</pPort></IntReg>", ReadOnly,
     "18", "0 255 1"},

    {"MaskedBigEndianLsbMsb",
     "<MaskedIntReg "
     "Name=\"N\"><Address>0</Address><Length>4</Length><LSB>31</LSB><MSB>24</MSB><Endianess>BigEndian</"
     "Endianess></MaskedIntReg>",
     ReadOnly, "120", "0 255 1"},
    {"MaskedBigEndianMiddle",
     "<MaskedIntReg "
     "Name=\"N\"><Address>0</Address><Length>4</Length><LSB>15</LSB><MSB>8</MSB><Endianess>BigEndian</"
     "Endianess></MaskedIntReg>",
     ReadOnly, "52", "0 255 1"},
    {"MaskedBigEndianBit",
     "<MaskedIntReg "
     "Name=\"N\"><Address>0</Address><Length>4</Length><Bit>3</Bit><Endianess>BigEndian</Endianess></"
     "MaskedIntReg>",
     ReadOnly, "1", "0 1 1"},
    {"MaskedLittleEndian",
     "<MaskedIntReg "
     "Name=\"N\"><Address>0</Address><Length>4</Length><LSB>8</LSB><MSB>15</MSB></MaskedIntReg>",
     ReadOnly, "52", "0 255 1"},
    {"MaskedLittleEndianSigned",
     "<MaskedIntReg "
     "Name=\"N\"><Address>0</Address><Length>4</Length><LSB>0</LSB><MSB>3</MSB><Sign>Signed</Sign></"
     "MaskedIntReg>",
     ReadOnly, "2", "-8 7 1"},
    {"MaskedBigEndianSigned",
     "<MaskedIntReg "
     "Name=\"N\"><Address>0x50</Address><Length>4</Length><LSB>31</LSB><MSB>28</MSB><Sign>Signed</"
     "Sign><Endianess>BigEndian</Endianess></MaskedIntReg>",
     ReadOnly, "-1", "-8 7 1"},
    {"StructEntryLsbMsb",
     "<StructReg "
     "Comment=\"C\"><Address>0</Address><Length>4</Length><Endianess>BigEndian</Endianess><StructEntry "
     "Name=\"N\"><LSB>31</LSB><MSB>16</MSB></StructEntry></StructReg>",
     ReadOnly, "22136", "0 65535 1"},
    {"StructEntryBit",
     "<StructReg "
     "Comment=\"C\"><Address>0</Address><Length>4</Length><Endianess>BigEndian</Endianess><AccessMode>RW</"
     "AccessMode><StructEntry Name=\"N\"><Bit>0</Bit></StructEntry></StructReg>",
     ReadWrite, "0", "0 1 1"},
    {"StructEntryAccessMode",
     "<StructReg Comment=\"C\"><Address>0</Address><Length>4</Length><AccessMode>RW</AccessMode><StructEntry "
     "Name=\"N\"><AccessMode>RO</AccessMode><LSB>0</LSB><MSB>7</MSB></StructEntry></StructReg>",
     ReadOnly, "18", "0 255 1"},
    {"StructEntrySign",
     "<StructReg Comment=\"C\"><Address>0x10</Address><Length>2</Length><StructEntry "
     "Name=\"N\"><LSB>8</LSB><MSB>15</MSB><Sign>Signed</Sign></StructEntry></StructReg>",
     ReadOnly, "-1", "-128 127 1"},

    {"BooleanValue", "<Boolean Name=\"N\"><Value>true</Value></Boolean>", ReadWrite, "true", "0 1 1"},
    {"BooleanValueNumber", "<Boolean Name=\"N\"><Value>0</Value></Boolean>", ReadWrite, "false", "0 1 1"},
    {"BooleanPValue", "<Boolean Name=\"N\"><pValue>One</pValue></Boolean>", ReadWrite, "true", "0 1 1"},
    {"BooleanOnValueOffValue",
     "<Boolean Name=\"N\"><pValue>Byte</pValue><OnValue>0x12</OnValue><OffValue>3</OffValue></Boolean>",
     ReadWrite, "true", "0 1 1"},
    {"CommandPValue", "<Command Name=\"N\"><pValue>Byte</pValue><CommandValue>1</CommandValue></Command>",
     WriteOnly, "", ""},
    {"CommandValue", "<Command Name=\"N\"><Value>0</Value><pCommandValue>One</pCommandValue></Command>",
     WriteOnly, "", ""},

    {"EnumerationValue",
     "<Enumeration Name=\"N\"><EnumEntry Name=\"A\"><Value>1</Value></EnumEntry><EnumEntry "
     "Name=\"B\"><Value>3</Value></EnumEntry><Value>3</Value></Enumeration>",
     ReadWrite, "B", "1 3 1"},
    {"EnumerationPValue",
     "<Enumeration Name=\"N\"><EnumEntry "
     "Name=\"A\"><Value>0x12</Value></EnumEntry><pValue>Byte</pValue></Enumeration>",
     ReadWrite, "A", "18 18 1"},
    {"EnumEntrySymbolic",
     "<Enumeration Name=\"N\"><EnumEntry "
     "Name=\"EnumEntry_N_A\"><Value>1</Value><Symbolic>A</Symbolic></EnumEntry><Value>1</Value></"
     "Enumeration>",
     ReadWrite, "A", "1 1 1"},
    {"EnumerationPEnumEntry",
     "<EnumEntry Name=\"Outside\"><Value>1</Value></EnumEntry><Enumeration "
     "Name=\"N\"><pEnumEntry>Outside</pEnumEntry><Value>1</Value></Enumeration>",
     ReadWrite, "Outside", "1 1 1"},

    {"FloatValue", "<Float Name=\"N\"><Value>2.5</Value></Float>", ReadWrite, "2.5", kAllFloats},
    {"FloatValueInfinite", "<Float Name=\"N\"><Value>-INF</Value></Float>", ReadWrite, "-inf", kAllFloats},
    {"FloatPValue", "<Float Name=\"N\"><pValue>Byte</pValue></Float>", ReadWrite, "18", "0 255 1"},
    {"FloatValueIndexed",
     "<Float Name=\"N\"><pIndex>One</pIndex><ValueIndexed "
     "Index=\"1\">0.25</ValueIndexed><ValueDefault>1</ValueDefault></Float>",
     ReadWrite, "0.25", kAllFloats},
    {"FloatMinMaxInc",
     "<Float Name=\"N\"><Value>1.5</Value><Min>-0.5</Min><Max>2.5</Max><Inc>0.5</Inc></Float>", ReadWrite,
     "1.5", "-0.5 2.5 0.5"},
    {"FloatPMinPMaxPInc",
     "<Float Name=\"N\"><Value>1.5</Value><pMin>Half</pMin><pMax>Two</pMax><pInc>Half</pInc></Float>",
     ReadWrite, "1.5", "0.5 2 0.5"},
    {"FloatRegOf4Bytes",
     "<FloatReg "
     "Name=\"N\"><Address>0x20</Address><Length>4</Length><Endianess>BigEndian</Endianess></FloatReg>",
     ReadOnly, "1.5", kSingles},
    {"FloatRegOf8Bytes",
     "<FloatReg "
     "Name=\"N\"><Address>0x28</Address><Length>8</Length><AccessMode>RW</AccessMode><Endianess>BigEndian</"
     "Endianess></FloatReg>",
     ReadWrite, "1.5", kAllFloats},

    {"StringValue", "<String Name=\"N\"><Value>some text</Value></String>", ReadWrite, "some text", ""},
    {"StringPValue", "<String Name=\"N\"><pValue>Text</pValue></String>", ReadWrite, "Hi", ""},
    {"StringReg", "<StringReg Name=\"N\"><Address>0x40</Address><Length>4</Length></StringReg>", ReadOnly,
     "Hi", ""},
    {"RegisterLength",
     "<Register Name=\"N\"><Address>0</Address><Length>3</Length><AccessMode>RW</AccessMode></Register>",
     ReadWrite, "123456", ""},
    {"RegisterOfPLength", "<Register Name=\"N\"><Address>0x40</Address><pLength>Two</pLength></Register>",
     ReadOnly, "4869", ""},

    {"IntSwissKnife",
     "<IntSwissKnife Name=\"N\"><pVariable Name=\"X\">Byte</pVariable><Constant "
     "Name=\"C\">5</Constant><Expression Name=\"Y\">X/C</Expression><Formula>Y*2</Formula></IntSwissKnife>",
     ReadOnly, "6", kAll},
    {"IntSwissKnifeOverASecret",
     "<IntSwissKnife Name=\"N\"><pVariable Name=\"X\">Secret</pVariable><Formula>X</Formula></IntSwissKnife>",
     NotAvailable, "", kAll},
    {"SwissKnife",
     "<SwissKnife Name=\"N\"><pVariable Name=\"X\">Byte</pVariable><Formula>X/4</Formula></SwissKnife>",
     ReadOnly, "4.5", kAllFloats},
    {"Converter",
     "<Converter "
     "Name=\"N\"><FormulaTo>FROM*4</FormulaTo><FormulaFrom>TO/4</FormulaFrom><pValue>Byte</pValue></"
     "Converter>",
     ReadWrite, "4.5", "0 63.75 0"},
    {"ConverterIsLinear",
     "<Converter "
     "Name=\"N\"><FormulaTo>FROM*4</FormulaTo><FormulaFrom>TO/4</FormulaFrom><pValue>Byte</"
     "pValue><IsLinear>Yes</IsLinear></Converter>",
     ReadWrite, "4.5", "0 63.75 0.25"},
    {"ConverterSlopeDecreasing",
     "<Converter "
     "Name=\"N\"><FormulaTo>300-FROM</FormulaTo><FormulaFrom>300-TO</FormulaFrom><pValue>Byte</"
     "pValue><Slope>Decreasing</Slope></Converter>",
     ReadWrite, "282", "45 300 0"},
    {"ConverterSlopeVarying",
     "<Converter "
     "Name=\"N\"><FormulaTo>10-FROM</FormulaTo><FormulaFrom>10-TO</FormulaFrom><pValue>Byte</"
     "pValue><Slope>Varying</Slope></Converter>",
     ReadWrite, "-8", "-245 10 0"},
    {"IntConverter",
     "<IntConverter "
     "Name=\"N\"><FormulaTo>FROM/2</FormulaTo><FormulaFrom>TO*2</FormulaFrom><pValue>Byte</pValue></"
     "IntConverter>",
     ReadWrite, "36", "0 510 1"},

    {"Category", "<Category Name=\"N\"><pFeature>One</pFeature></Category>", ReadOnly, "N", ""},
    {"Node", "<Node Name=\"N\"/>", NotImplemented, "", ""},
    {"Group", "<Group Comment=\"C\"><Integer Name=\"N\"><Value>5</Value></Integer></Group>", ReadWrite, "5",
     kAll},
    {"AdvFeatureLock",
     "<AdvFeatureLock Name=\"N\"><FeatureID>1</FeatureID><Timeout>5</Timeout></AdvFeatureLock>",
     NotImplemented, "", ""},
    {"DcamLock", "<DcamLock Name=\"N\"/>", NotImplemented, "", ""},
    {"SmartFeature", "<SmartFeature Name=\"N\"><FeatureID>1</FeatureID></SmartFeature>", NotImplemented, "",
     ""},
    {"ConfRom", "<ConfRom Name=\"N\"><Unit>1</Unit><TextDesc Name=\"T\"/><IntKey Name=\"K\"/></ConfRom>",
     NotImplemented, "", ""},
    {"TextDesc", "<TextDesc Name=\"N\"/>", NotImplemented, "", ""},
    {"IntKey", "<IntKey Name=\"N\"/>", NotImplemented, "", ""},
};

class EveryElementTest : public NodeMapFixture, public ::testing::WithParamInterface<Row> {
protected:
    EveryElementTest()
    {
        port.Put(0x00, {0x12, 0x34, 0x56, 0x78, 0x9A, 0xBC, 0xDE, 0xF0});
        port.Put(0x10, {0xFE, 0xFF});
        port.Put(0x20, {0x3F, 0xC0, 0x00, 0x00});
        port.Put(0x28, {0x3F, 0xF8, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00});
        port.Put(0x40, {'H', 'i', 0, 'x'});
        port.Put(0x50, {0x00, 0x00, 0x00, 0x0F});
        Load(std::string(GetParam().nodes) + kOthers);
    }

    [[nodiscard]] std::string Limits()
    {
        const NodeId node = Id("N");
        if (map->Info(node).type == ValueType::Float) {
            const auto limits = map->GetFloatLimits(node);
            const auto text = [](double value) { return FloatToText(value, FloatDigits::Double); };
            return limits
                       ? text(limits->minimum) + " " + text(limits->maximum) + " " + text(limits->increment)
                       : std::string();
        }
        const auto limits = map->GetIntegerLimits(node);
        const auto text = [](std::int64_t value) { return std::to_string(value); };
        return limits ? text(limits->minimum) + " " + text(limits->maximum) + " " + text(limits->increment)
                      : std::string();
    }
};

TEST_P(EveryElementTest, HasItsAccessValueAndLimits)
{
    const Row& row = GetParam();

    EXPECT_EQ(Access("N"), row.access);
    const auto text = Text("N");
    EXPECT_EQ(text.ValueOr(""), row.text) << SentenceOf(text);
    const bool isReadable = IsReadable(row.access) || map->Info(Id("N")).type == ValueType::Command;
    EXPECT_EQ(text.HasValue(), isReadable) << SentenceOf(text);
    EXPECT_EQ(Limits(), row.limits);
}

INSTANTIATE_TEST_SUITE_P(Rows, EveryElementTest, ::testing::ValuesIn(kRows),
                         [](const auto& row) { return std::string(row.param.name); });

std::vector<Row> WritableRows()
{
    std::vector<Row> rows;
    // An infinite value is one that a description may give, but nobody may set.
    std::ranges::copy_if(kRows, std::back_inserter(rows), [](const Row& row) {
        return row.access == ReadWrite && std::string_view(row.text) != "-inf";
    });
    return rows;
}

class EveryWritableElementTest : public EveryElementTest {};

TEST_P(EveryWritableElementTest, TakesTheTextThatItGave)
{
    const auto result = SetText("N", GetParam().text);

    EXPECT_TRUE(result.IsOK()) << SentenceOf(result);
    EXPECT_EQ(ValueOf(Text("N")), GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(Rows, EveryWritableElementTest, ::testing::ValuesIn(WritableRows()),
                         [](const auto& row) { return std::string(row.param.name); });

} // namespace
} // namespace genapi
