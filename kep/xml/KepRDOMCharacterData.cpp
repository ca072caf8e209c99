#include "kep/xml/KepRDOMCharacterData.h"

#include <algorithm>
#include <cstring>

#include "kep/base/KepFactory.h"
#include "kep/base/KepRString.h"

KEP_REGISTER_LIBRARY_CLASS(DOMCharacterData);

namespace {

std::size_t unitBytes(int n) { return static_cast<std::size_t>(n) * sizeof(unsigned short); }

KepString const& emptyText() {
  static KepString const empty("");
  return empty;
}

// The string body of a text body, or null.
KepRString const* stringOf(KepRObject const* body) {
  if (body == nullptr || !body->isOfType(KepClassID::String)) return nullptr;
  return static_cast<KepRString const*>(body);
}

}  // namespace

KepRDOMCharacterData::~KepRDOMCharacterData() {
  if (data != nullptr) data->release();
}

void KepRDOMCharacterData::assign(KepString const& text) { _KepDOMHoldBody(data, text); }

KepString KepRDOMCharacterData::text() const { return _KepDOMHandle<KepString>(data); }

int KepRDOMCharacterData::textLength() const noexcept {
  KepRString const* body = stringOf(data);
  return body != nullptr ? body->unitCount() : 0;
}

KepString KepRDOMCharacterData::getData() const { return data == nullptr ? emptyText() : text(); }

KepString KepRDOMCharacterData::getNodeValue() const { return getData(); }

void KepRDOMCharacterData::setNodeValue(KepString const& value) { setData(value); }

int KepRDOMCharacterData::getLength() const { return textLength(); }

void KepRDOMCharacterData::setData(KepString const& text) {
  assign(text);
  valueChanged();
}

KepString KepRDOMCharacterData::substringData(int offset, int count) const {
  int length = textLength();
  if (offset < 0 || offset > length || count < 0) return KepString();
  int end = static_cast<int>(std::min<long>(length, static_cast<long>(offset) + count));
  if (offset == end) return emptyText();
  return text().substring(offset, end);
}

void KepRDOMCharacterData::splice(int from, int to, KepString const& insert) {
  KepRString const* old = stringOf(data);
  KepRString const* added = KepRString::of(insert);
  int length = old != nullptr ? old->unitCount() : 0;
  int addedLength = added != nullptr ? added->unitCount() : 0;
  KepRString* fresh = KepRString::allocate(length - (to - from) + addedLength);
  if (fresh == nullptr) return;
  unsigned short* out = fresh->mutableUnits();
  if (from > 0) std::memcpy(out, old->units(), unitBytes(from));
  if (addedLength > 0) std::memcpy(out + from, added->units(), unitBytes(addedLength));
  if (to < length) std::memcpy(out + from + addedLength, old->units() + to, unitBytes(length - to));
  assign(KepString(static_cast<KepBridgeToObject*>(fresh)));
  valueChanged();
}

void KepRDOMCharacterData::appendData(KepString const& text) {
  int length = textLength();
  splice(length, length, text);
}

void KepRDOMCharacterData::insertData(int offset, KepString const& text) {
  if (offset < 0 || offset > textLength()) return;
  splice(offset, offset, text);
}

void KepRDOMCharacterData::deleteData(int offset, int count) {
  int length = textLength();
  if (offset < 0 || offset > length || count < 0) return;
  splice(offset, static_cast<int>(std::min<long>(length, static_cast<long>(offset) + count)),
         KepString());
}

void KepRDOMCharacterData::replaceData(int offset, int count, KepString const& text) {
  int length = textLength();
  if (offset < 0 || offset > length || count < 0) return;
  splice(offset, static_cast<int>(std::min<long>(length, static_cast<long>(offset) + count)), text);
}

unsigned long KepRDOMCharacterData::isIgnorableWhitespace() const {
  KepRString const* body = stringOf(data);
  if (body == nullptr) return 1;
  unsigned short const* units = body->units();
  for (int i = 0, n = body->unitCount(); i < n; ++i) {
    unsigned short u = units[i];
    if (u != ' ' && u != '\t' && u != '\r' && u != '\n') return 0;
  }
  return 1;
}

void KepRDOMCharacterData::copyInto(KepRDOMNode& copy) const {
  KepRDOMChildNode::copyInto(copy);
  if (auto* target = dynamic_cast<KepRDOMCharacterData*>(&copy)) target->assign(text());
}
