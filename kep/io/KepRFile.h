// KepRFile: the body of KepFile.
#ifndef KEP_IO_KEPRFILE_H
#define KEP_IO_KEPRFILE_H

#include <atomic>
#include <string>

#include "kep/io/KepFile.h"
#include "kep/io/KepRIOStream.h"
#include "kep/io/_KepIO.h"

// A path and, while the file is open, its file-layer record. Operations are
// those of KepFile and KepIOStream.
//
// Thread safety: see KepIOStream. The record is used only inside bracketed
// operations; the open mode is atomic so the unbracketed isReadable() and
// isWritable() may read it.
class KEP_API KepRFile : public KepRIOStream {
  KEP_BODY_IDENTITY(File, KepRIOStream)
  KEP_BODY_CREATE_ANOTHER(File)

 public:
  // A file object without a path (what the factory makes).
  KepRFile();
  // A file object for the path `path`.
  explicit KepRFile(std::string path);
  // Closes the file when it is open.
  ~KepRFile() override;

  KEP_METHODS_File(KEP_DECLARE_METHOD)

      KepString toString() const override;

  using KepRIOStream::read;
  using KepRIOStream::write;
  int read(signed char* buffer, int offset, int length) override;
  int write(signed char* buffer, int offset, int length) override;
  long skip(long count) override;
  int available() override;
  unsigned long markSupported() const override;
  void mark(int readLimit) override;
  unsigned long reset() override;
  void flush() override;
  void close() override;
  unsigned long isReadable() const override;
  unsigned long isWritable() const override;

 private:
  // Opens the file on first use: for reading (`forWrite` false) or writing.
  // False when the stream is closed or the open failed.
  bool ensureOpen(bool forWrite);
  // Closes the record when open (the stream itself stays usable).
  void closeRecord();
  // The attribute of _KepIOGetAttribute, or -1 when nothing is at the path.
  long attribute() const;
  // Records the layer's result and answers whether it was success.
  bool ok(uint32_t code) const;

  std::string path;
  KepString pathText;
  _Io_File record;
  std::atomic<int> mode;
  long markPosition;
};

#endif  // KEP_IO_KEPRFILE_H
