// Compressed instances of a move: the destination is offered native data alone.
#include <gtest/gtest.h>

#include "net/retrieve_helpers.h"
#include "services/codec_place.h"
#include "support/data_set_builder.h"
#include "support/temp_folder.h"

namespace tessaret::test {
namespace {

const testing::Environment* const kPlace = testing::AddGlobalTestEnvironment(new CodecPlace);

// A run of eight bytes of 7 in the toy's form: how many, and the byte turned round by 0x5A.
const Bytes kToyFragment = {8, 0x07 ^ 0x5A};

/// What two rows of four bytes are described by.
DataSetBuilder HeadOfBytes() {
  DataSetBuilder data(Encoding::kExplicitLittle);
  data.Element(0x0008, 0x0016, "UI", Evened(kCt)).Element(0x0008, 0x0018, "UI", Evened("1.1"));
  data.Number(0x0028, 0x0002, 1).Element(0x0028, 0x0004, "CS", "MONOCHROME2 ");
  data.Number(0x0028, 0x0010, 2).Number(0x0028, 0x0011, 4);
  data.Number(0x0028, 0x0100, 8).Number(0x0028, 0x0101, 8).Number(0x0028, 0x0102, 7);
  data.Number(0x0028, 0x0103, 0);
  return data;
}

/// They in one fragment, in a file with this meta header.
Bytes FileWith(const Bytes& meta, const Bytes& fragment) {
  return Joined({Preamble(), meta, HeadOfBytes().Fragments({Bytes(), fragment}).Done()});
}

/// The head with an icon in one fragment.
DataSetBuilder HeadWithIcon() {
  DataSetBuilder icon(Encoding::kExplicitLittle);
  icon.Fragments({Bytes(), kToyFragment});
  DataSetBuilder data = HeadOfBytes();
  return data.Sequence(0x0088, 0x0200, Lengths::kUndefined, Lengths::kUndefined, {icon});
}

/// Without its length the group ends at its first element, and the name of the syntax does not stay in the object.
Bytes MetaThatDoesNotStay(std::string_view syntax) {
  return DataSetBuilder(Encoding::kExplicitLittle)
      .Element(0x0002, 0x0010, "UI", Evened(syntax))
      .Done();
}

TEST(RetrieveOfCompressedInstances, SendsThemDecoded) {
  for (const Bytes& meta : {MetaGroup(kToy), MetaThatDoesNotStay(kToy)}) {
    ExpectMoved(FileWith(meta, kToyFragment),
                Elements()
                    .Uid(0x0008, 0x0016, kCt)
                    .Uid(0x0008, 0x0018, "1.1")
                    .Number(0x0028, 0x0002, 1)
                    .Text(0x0028, 0x0004, "TOY ")  // as the codec says
                    .Number(0x0028, 0x0010, 2)
                    .Number(0x0028, 0x0011, 4)
                    .Number(0x0028, 0x0100, 8)
                    .Number(0x0028, 0x0101, 8)
                    .Number(0x0028, 0x0102, 7)
                    .Number(0x0028, 0x0103, 0)
                    .Value(0x7FE0, 0x0010, Bytes(8, 7)));
  }
}

TEST(RetrieveOfCompressedInstances, CountsThoseThatCannotBeDecodedAsFailed) {
  const struct {
    const char* what;
    Bytes file;
  } rows[] = {
      {"what the codec does not take", FileWith(MetaGroup(kToy), {9, 9})},
      {"fragments that are said to be native", FileWith(MetaGroup(kExplicit), kToyFragment)},
      {"an icon that the engine leaves as it is",
       Joined({Preamble(), MetaGroup(kToy),
               HeadWithIcon().Fragments({Bytes(), kToyFragment}).Done()})},
      {"such an icon without an image",
       Joined({Preamble(), MetaGroup(kToy), HeadWithIcon().Done()})},
      {"an icon that is said to be native",
       Joined({Preamble(), MetaGroup(kExplicit),
               HeadWithIcon().Element(0x7FE0, 0x0010, "OB", Bytes(8, 7)).Done()})},
  };
  for (const auto& row : rows) {
    const TempFolder folder;
    WriteBytes(folder.File("1.1"), row.file);
    Moving move;
    move.files = {folder.File("1.1")};
    Destination destination({});
    move.port = destination.Port();
    EXPECT_EQ(AnswersOf(move, MoveRequest("DEST")),
              Joined({MoveAnswer(0xFF00, {0, 0, 1, 0}), MoveAnswer(0, {0, 0, 1, 0})}))
        << row.what;
    EXPECT_EQ(destination.Wait(), "");
    EXPECT_EQ(destination.received, "5") << "nothing but the end comes";
  }
}

TEST(RetrieveOfCompressedInstances, SendsWhatHasNoPixelsAsItIs) {
  const Bytes report = DataSetBuilder(Encoding::kExplicitLittle)
                           .Element(0x0008, 0x0016, "UI", Evened(kCt))
                           .Element(0x0008, 0x0018, "UI", Evened("1.1"))
                           .Done();
  ExpectMoved(Joined({Preamble(), MetaGroup(kToy), report}),
              Elements().Uid(0x0008, 0x0016, kCt).Uid(0x0008, 0x0018, "1.1"));
}

}  // namespace
}  // namespace tessaret::test
