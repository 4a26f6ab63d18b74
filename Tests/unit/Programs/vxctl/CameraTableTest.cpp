#include "vxctl/CameraTable.h"

#include <gmock/gmock.h>

namespace vxctl {
namespace {

using testing::HasSubstr;

CameraRow Row(const char* id, const char* address)
{
    CameraRow row;
    row.id = id;
    row.type = "GigE Vision";
    row.model = "Model";
    row.address = address;
    row.interface = "eth0 (192.168.0.1)";
    return row;
}

TEST(CameraTableTest, SaysWhatStandsInTheWay)
{
    std::vector<CameraRow> rows{Row("a", "192.168.0.2"), Row("b", "10.0.0.2"), Row("c", "0.0.0.0"),
                                Row("d", "192.168.0.9"), Row("e", "192.168.0.9")};

    TellStates(rows, {true, false, false, false, false});

    EXPECT_EQ(rows[0].state, "ready");
    EXPECT_EQ(rows[1].state, "wrong subnet");
    EXPECT_EQ(rows[2].state, "no address");
    EXPECT_EQ(rows[3].state, "address used twice");
    EXPECT_EQ(rows[4].state, "address used twice");
}

TEST(CameraTableTest, TakesOneCameraOnTwoInterfacesForOne)
{
    std::vector<CameraRow> rows{Row("a", "192.168.0.2"), Row("a", "192.168.0.2")};

    TellStates(rows, {true, false});

    EXPECT_EQ(rows[1].state, "wrong subnet");
}

TEST(CameraTableTest, PrintsOneCameraALine)
{
    std::vector<CameraRow> rows{Row("02-00-00-00-00-01", "192.168.0.2")};
    rows[0].userName = "left \x1B camera";
    TellStates(rows, {true});

    EXPECT_EQ(CameraTableText(rows),
              "ID                 MODEL  SERIAL  NAME           ADDRESS      INTERFACE           STATE\n"
              "02-00-00-00-00-01  Model  -       left ? camera  192.168.0.2  eth0 (192.168.0.1)  ready\n");
}

TEST(CameraTableTest, PrintsJson)
{
    std::vector<CameraRow> rows{Row("a", "192.168.0.2"), Row("b", "10.0.0.2")};
    rows[1].userName = "\"quoted\"";
    TellStates(rows, {true, false});

    EXPECT_EQ(
        CameraTableJson(rows),
        "[\n {\"id\": \"a\", \"model\": \"Model\", \"serial\": \"\", \"name\": \"\", \"address\": "
        "\"192.168.0.2\", "
        "\"interface\": \"eth0 (192.168.0.1)\", \"state\": \"ready\", \"manufacturer\": \"\", \"type\": "
        "\"GigE Vision\"},\n"
        " {\"id\": \"b\", \"model\": \"Model\", \"serial\": \"\", \"name\": \"\\\"quoted\\\"\", \"address\": "
        "\"10.0.0.2\", \"interface\": \"eth0 (192.168.0.1)\", \"state\": \"wrong subnet\", \"manufacturer\": "
        "\"\", \"type\": \"GigE Vision\"}\n]\n");
    EXPECT_EQ(CameraTableJson({}), "[]\n");
}

TEST(CameraTableTest, AdvisesOnlyWhenThereIsSomethingToDo)
{
    std::vector<CameraRow> rows{Row("a", "192.168.0.2"), Row("02-00-00-00-00-0B", "10.0.0.2")};
    TellStates(rows, {true, true});
    EXPECT_EQ(CameraAdvice(rows), "");

    TellStates(rows, {true, false});

    EXPECT_THAT(CameraAdvice(rows), HasSubstr("vxctl force-ip 02-00-00-00-00-0B ADDRESS"));
}

} // namespace
} // namespace vxctl
