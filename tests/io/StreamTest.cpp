// The stream base, in-memory streams and a caller's stream derived from the
// stream handle.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "kep/Kep.h"

namespace {

std::string bytesOf(KepString const& text) { return text.toStdString(); }

// A caller's stream: reads its input in pieces of up to 3 bytes, records what
// is written (up to `limit` bytes more) and whether it was closed.
class Recorder : public KepIOStream {
 public:
  explicit Recorder(std::string text)
      : KepIOStream(nullptr, KepClassIdArg(KepClassID::IOStream)), input(std::move(text)) {}
  unsigned long isBridge() const override { return 0; }
  using KepIOStream::read;
  using KepIOStream::write;
  int read(signed char* buffer, int offset, int length) override {
    if (input.empty()) return -1;
    int n = std::min({int(input.size()), length, 3});
    std::copy_n(input.begin(), n, buffer + offset);
    input.erase(0, size_t(n));
    return n;
  }
  int write(signed char* buffer, int offset, int length) override {
    int take = std::min(length, limit);
    written.append(reinterpret_cast<char const*>(buffer + offset), size_t(take));
    limit -= take;
    return take;
  }
  void close() override { closedByCaller = true; }

  std::string input;
  std::string written;
  int limit = 1 << 30;
  bool closedByCaller = false;
};

}  // namespace

TEST(StreamBase, TheDevicelessBodyReadsNothingAndRecordsFailures) {
  signed char buffer[4];
  KepIOStream plain(KepGetObject(KepClassID::IOStream, 0));
  ASSERT_FALSE(plain.isNull());
  EXPECT_EQ(std::vector<int>({plain.read(), plain.read(buffer, 0, 4), int(plain.markSupported()),
                              int(plain.isReadable())}),
            std::vector<int>({-1, -1, 0, 1}));
  EXPECT_EQ(plain.reset(), 0u) << "no mark without a device";
  EXPECT_EQ(plain.read(nullptr, 0, 4), -1);
  EXPECT_EQ(plain.getError(), static_cast<int>(KEP_IO_FAILED));
}

TEST(StringBufferStream, NarrowsAndWidensByteForByteAndReadsWhatWasWritten) {
  KepStringBufferIOStream out;
  ASSERT_FALSE(out.isNull()) << "a default-constructed stream is a new, empty stream";
  EXPECT_EQ(out.write("abc"), 3);
  unsigned short units[] = {0x0141, 'x', 0x00E9};
  EXPECT_EQ(out.write(KepString(units, 0, 3)), 3);
  EXPECT_EQ(out.write(0x1FF), 1);
  signed char raw[] = {'0', '1', '2', '3'};
  EXPECT_EQ(out.write(raw, 1, 2), 2);
  EXPECT_EQ(out.writeLine(KepString("!")), 2);
  KepString all = out.toString();
  ASSERT_EQ(all.length(), 11);
  EXPECT_EQ(all.charAt(3), 0x41) << "units are narrowed to their low byte";
  EXPECT_EQ(all.charAt(5), 0xE9) << "bytes come back widened, not sign-extended";
  EXPECT_EQ(all.charAt(6), 0xFF);
  EXPECT_EQ(bytesOf(out.toString(7, 2)), "12");
  EXPECT_EQ(out.toString(50, 2).length(), 0) << "a start past the end gives nothing";
  EXPECT_EQ(out.read(), 'a') << "what is written can be read back";

  signed char data[] = {'x', 0, 'y'};
  out.setBytes(data, 0, 3);
  EXPECT_EQ(out.toString().charAt(1), 0) << "zero bytes are content like any other";
  out.close();
  EXPECT_EQ(out.read(), -1) << "closed streams refuse reads and writes";
  EXPECT_EQ(out.write("x"), 0);
  EXPECT_EQ(out.size(), 3) << "the content stays";
  out.setText(KepString("new"));
  EXPECT_EQ(out.isClosed(), 0u) << "until a new content";
  EXPECT_EQ(out.read(), 'n');
}

TEST(StringBufferStream, ReadsLinesMarksSkipsAndBlocks) {
  KepStringBufferIOStream in(KepString("first\r\nsecond\nthird"));
  EXPECT_EQ(bytesOf(in.readLine()), "first");
  in.mark(0);
  EXPECT_EQ(bytesOf(in.readLine()), "second");
  EXPECT_EQ(in.reset(), 1u);
  EXPECT_EQ(in.skip(3), 3);
  EXPECT_EQ(bytesOf(in.readText(4)), "ond\n");
  EXPECT_EQ(bytesOf(in.readLine()), "third") << "the last line needs no newline";
  EXPECT_TRUE(in.readLine().isNull());
  in.rewind();
  signed char buffer[64];
  EXPECT_EQ(in.readFully(buffer, 0, 64), 19);
  EXPECT_EQ(in.readFully(buffer, 0, 64), -1);

  // A block read of exactly the content is followed by the end.
  KepStringBufferIOStream block{KepString(std::string(32767, 'k').c_str())};
  std::vector<signed char> bytes(32767);
  EXPECT_EQ(block.read(bytes.data(), 0, 32767), 32767);
  EXPECT_EQ(block.read(bytes.data(), 0, 32767), -1);
}

TEST(StreamInto, CopiesUpToALengthOrTheEndAndClosesTheSourceOnRequest) {
  KepStringBufferIOStream source(KepString("hello, world"));
  KepStringBufferIOStream target;
  EXPECT_EQ(source.into(target, 5, 0), 5);
  EXPECT_EQ(bytesOf(target.toString()), "hello");
  EXPECT_EQ(source.into(target, -1, 1), 7);
  EXPECT_EQ(source.isClosed(), 1u);
  EXPECT_EQ(target.into(target, -1, 0), 0) << "a stream is not copied into itself";
}

TEST(OuterStream, CallersOverridesReceiveTheLibrarysCalls) {
  auto* recorder = new Recorder("line one\nline two\n");
  {
    KepIOStream handle(*recorder);  // targets the outer object
    EXPECT_EQ(handle.writeLine(KepString("end")), 4);
    EXPECT_EQ(recorder->written, "end\n");
    EXPECT_EQ(bytesOf(handle.readLine()), "line one") << "composite reads use the override";
    KepStringBufferIOStream sink;
    EXPECT_EQ(handle.into(sink, -1, 1), 9);
    EXPECT_EQ(bytesOf(sink.toString()), "line two\n");
    EXPECT_TRUE(recorder->closedByCaller) << "into closes through the caller's close";

    KepStringBufferIOStream source(KepString("0123456789"));
    recorder->limit = 4;
    EXPECT_EQ(source.into(handle, -1, 0), 4) << "copying stops when the target takes less";
    EXPECT_EQ(recorder->written.substr(recorder->written.size() - 4), "0123");
  }
  // The last handle took the outer object and its body with it.
}
