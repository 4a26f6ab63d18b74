#include "LargeDescription.h"

#include <cstddef>
#include <string_view>

namespace {

// Chosen: eight nodes each.
constexpr int kGroups = 250;
constexpr int kGroupsPerCategory = 10;
constexpr int kRegisterBytes = 16; // from one group to the next

std::string Element(std::string_view name, std::string_view text)
{
    return "\t\t<" + std::string(name) + ">" + std::string(text) + "</" + std::string(name) + ">\n";
}

std::string Node(std::string_view tag, std::string_view name, std::string_view elements)
{
    return "\t<" + std::string(tag) + " Name=\"" + std::string(name) + "\" NameSpace=\"Custom\">\n" +
           std::string(elements) + "\t</" + std::string(tag) + ">\n";
}

std::string Shown(std::string_view name)
{
    return Element("ToolTip", "What " + std::string(name) + " is for, in one sentence.") +
           Element("Description",
                   "A longer text about " + std::string(name) +
                       ", which tells what it does, in which unit, and what else it changes.") +
           Element("DisplayName", name) + Element("Visibility", "Expert");
}

std::string Register(int address)
{
    return Element("Visibility", "Invisible") + Element("Address", "0x" + std::to_string(1000 + address)) +
           Element("Length", "4") + Element("AccessMode", "RW") + Element("pPort", "Device") +
           Element("Cachable", "WriteThrough");
}

std::string IntegerNodes(const std::string& n, int address)
{
    return Node("Integer", "Width" + n,
                Shown("Width" + n) + Element("pIsLocked", "TLParamsLocked") + Element("Streamable", "Yes") +
                    Element("pValue", "WidthReg" + n) + Element("Min", "0") +
                    Element("pMax", "WidthMax" + n) + Element("Inc", "1") +
                    Element("Representation", "Linear")) +
           Node("IntReg", "WidthReg" + n,
                Register(address) + Element("Sign", "Unsigned") + Element("Endianess", "BigEndian")) +
           Node("IntSwissKnife", "WidthMax" + n,
                "\t\t<pVariable Name=\"W\">WidthReg" + n + "</pVariable>\n" +
                    Element("Formula", "(W &lt; 4096) ? 8192 : 16384 - (W % 16)"));
}

std::string EnumerationNodes(const std::string& n, int address)
{
    std::string entries;
    int number = 0;
    for (const char* entry : {"Off", "Once", "Continuous", "External"}) {
        entries += "\t\t<EnumEntry Name=\"" + std::string(entry) + "\" NameSpace=\"Standard\">\n" +
                   Element("DisplayName", entry) + Element("Value", std::to_string(number)) +
                   "\t\t</EnumEntry>\n";
        ++number;
    }
    return Node("Enumeration", "Mode" + n, Shown("Mode" + n) + entries + Element("pValue", "ModeReg" + n)) +
           Node("MaskedIntReg", "ModeReg" + n,
                Register(address) + Element("LSB", "31") + Element("MSB", "28") +
                    Element("Sign", "Unsigned") + Element("Endianess", "BigEndian"));
}

std::string FloatNodes(const std::string& n, int address)
{
    return Node("Float", "Gain" + n,
                Shown("Gain" + n) + Element("pValue", "GainConverter" + n) + Element("Min", "0") +
                    Element("Max", "36.0") + Element("Unit", "dB") + Element("Representation", "Linear")) +
           Node("Converter", "GainConverter" + n,
                Element("FormulaTo", "FROM * 100.0") + Element("FormulaFrom", "TO / 100.0") +
                    Element("pValue", "GainReg" + n) + Element("Slope", "Increasing")) +
           Node("IntReg", "GainReg" + n,
                Register(address) + Element("Sign", "Unsigned") + Element("Endianess", "BigEndian"));
}

} // namespace

std::string MakeLargeDescription()
{
    std::string root;
    std::string categories;
    std::string nodes;
    for (int group = 0; group < kGroups; ++group) {
        const std::string n = std::to_string(group);
        if (group % kGroupsPerCategory == 0) {
            if (group > 0)
                categories += "\t</Category>\n";
            root += Element("pFeature", "Control" + n);
            categories += "\t<Category Name=\"Control" + n + "\" NameSpace=\"Custom\">\n";
        }
        for (const char* feature : {"Width", "Mode", "Gain"})
            categories += Element("pFeature", feature + n);
        const int address = group * kRegisterBytes;
        nodes += IntegerNodes(n, address) + EnumerationNodes(n, address + 4) + FloatNodes(n, address + 8);
    }
    return "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n"
           "<RegisterDescription ModelName=\"Large\" VendorName=\"Benchmark\" StandardNameSpace=\"GEV\" "
           "SchemaMajorVersion=\"1\" SchemaMinorVersion=\"1\" SchemaSubMinorVersion=\"0\" MajorVersion=\"1\" "
           "MinorVersion=\"0\" SubMinorVersion=\"0\" ToolTip=\"\" "
           "ProductGuid=\"00000000-0000-0000-0000-000000000000\" "
           "VersionGuid=\"00000000-0000-0000-0000-000000000000\" "
           "xmlns=\"http://www.genicam.org/GenApi/Version_1_1\">\n" +
           Node("Category", "Root", root) + categories + "\t</Category>\n" + nodes +
           Node("Integer", "TLParamsLocked", Element("Value", "0")) + Node("Port", "Device", {}) +
           "</RegisterDescription>\n";
}
