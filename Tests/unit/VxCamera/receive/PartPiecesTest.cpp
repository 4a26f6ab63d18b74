#include "VxCamera/receive/PartPieces.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

namespace receive {
namespace {

std::vector<std::uint32_t> Ids(const std::vector<PartPieces::Piece>& pieces)
{
    std::vector<std::uint32_t> ids;
    for (const PartPieces::Piece& piece : pieces)
        ids.push_back(piece.packetId);
    return ids;
}
using IdList = std::vector<std::uint32_t>;

TEST(PartPiecesTest, PiecesInOrderCoverThePart)
{
    PartPieces pieces;
    pieces.Add({1, 0, 10});
    EXPECT_TRUE(pieces.Cover(10));
    EXPECT_FALSE(pieces.Cover(11));
    pieces.Add({2, 10, 5});
    EXPECT_TRUE(pieces.Cover(15));
    EXPECT_TRUE(Ids(pieces.TakeCut(15)).empty());
    EXPECT_TRUE(pieces.Cover(15));
}

TEST(PartPiecesTest, PiecesInAnyOrderCoverThePart)
{
    PartPieces pieces;
    pieces.Add({3, 15, 5});
    EXPECT_FALSE(pieces.Cover(1));
    pieces.Add({2, 10, 5});
    pieces.Add({1, 0, 10});
    EXPECT_TRUE(pieces.Cover(20));
}

TEST(PartPiecesTest, PiecesThatOverlapCoverNoMoreThanTheyBring)
{
    PartPieces pieces;
    pieces.Add({1, 0, 10});
    pieces.Add({2, 5, 10});
    pieces.Add({3, 5, 10});

    EXPECT_TRUE(pieces.Cover(15));
    EXPECT_FALSE(pieces.Cover(16));
}

TEST(PartPiecesTest, EachPieceInFrontOfAHoleIsTakenOut)
{
    PartPieces pieces;
    pieces.Add({1, 0, 9}); // of 10
    pieces.Add({3, 20, 0});
    pieces.Add({2, 10, 10});
    pieces.Add({4, 30, 7});

    EXPECT_EQ(Ids(pieces.TakeCut(40)), (IdList{1, 3, 4}));
    EXPECT_TRUE(Ids(pieces.TakeCut(20)).empty()) << "they are out";
    pieces.Add({1, 0, 10});
    pieces.Add({3, 20, 10});
    pieces.Add({4, 30, 10});
    EXPECT_TRUE(pieces.Cover(40));
}

TEST(PartPiecesTest, OfPiecesSideBySideTheLastOneIsTakenOut)
{
    PartPieces pieces;
    pieces.Add({1, 0, 10});
    pieces.Add({2, 10, 9}); // of 10
    pieces.Add({3, 20, 10});
    pieces.Add({4, 30, 5}); // of 10

    EXPECT_EQ(Ids(pieces.TakeCut(40)), (IdList{2, 4}));
    EXPECT_TRUE(pieces.Cover(10));
    EXPECT_FALSE(pieces.Cover(11));
    pieces.Add({4, 30, 10});
    pieces.Add({2, 10, 3}); // cut again
    EXPECT_EQ(Ids(pieces.TakeCut(40)), IdList{2});
    pieces.Add({2, 10, 10});
    EXPECT_TRUE(pieces.Cover(40));
}

TEST(PartPiecesTest, APieceThatComesAgainAtAnotherPlaceIsNotTakenFromWhereItWas)
{
    PartPieces pieces;
    pieces.Add({1, 0, 10});
    pieces.Add({2, 10, 9});
    pieces.Add({3, 20, 10});
    EXPECT_EQ(Ids(pieces.TakeCut(30)), IdList{2});
    pieces.Add({2, 25, 5});

    EXPECT_TRUE(Ids(pieces.TakeCut(30)).empty());
    EXPECT_FALSE(pieces.Cover(30));
}

TEST(PartPiecesTest, HolesBehindWhatMattersAreNone)
{
    PartPieces pieces;
    pieces.Add({1, 0, 10});
    pieces.Add({2, 12, 1});

    EXPECT_TRUE(Ids(pieces.TakeCut(10)).empty());
    EXPECT_TRUE(pieces.Cover(10));
    EXPECT_EQ(Ids(pieces.TakeCut(11)), IdList{1});
}

TEST(PartPiecesTest, NoPieceIsBlamedForAHoleAtTheBeginning)
{
    PartPieces pieces;
    pieces.Add({1, 5, 10});

    EXPECT_TRUE(Ids(pieces.TakeCut(15)).empty());
    EXPECT_FALSE(pieces.Cover(1));
    pieces.Clear();
    pieces.Add({1, 0, 15});
    EXPECT_TRUE(pieces.Cover(15));
}

} // namespace
} // namespace receive
