#include "kep/contain/KepRArray.h"

#include "kep/base/KepFactory.h"
#include "kep/base/KepString.h"
#include "kep/base/KepThreadError.h"

namespace {

// A heap handle on `object` for a position, or null for a null object.
KepObject* slotCopy(KepObject const& object) {
  return object.isNull() ? nullptr : KepFactory::newBridge(object);
}

void releaseSlot(KepObject*& slot) {
  KepObject* old = slot;
  slot = nullptr;
  if (old != nullptr) old->freeBridge();
}

}  // namespace

KepRArray::KepRArray() noexcept : inlineCount(0), inlineItems{}, spill(nullptr) {}

KepRArray::~KepRArray() {
  setSize(0);
  delete spill;
}

KepObject** KepRArray::slotAt(int i) const {
  if (i < 0 || i >= size()) return nullptr;
  if (spill != nullptr) return spill->_getEntry(i, nullptr, 0, nullptr, nullptr);
  return const_cast<KepObject**>(&inlineItems[i]);
}

void KepRArray::releaseSpilled(int from, int to) {
  // Walk with the group hint so that the chain is not searched from its start
  // for every position.
  _KepArrayImpl<KepObject*>::Group* group = nullptr;
  for (int i = from; i < to; ++i) {
    KepObject** slot = spill->_getEntry(i, nullptr, 0, group, &group);
    releaseSlot(*slot);
  }
}

KepArray KepRArray::clone() const {
  auto* copy = new KepRArray;
  KepArray result(copy);
  int n = size();
  copy->setSize(n);
  for (int i = 0; i < n; ++i) {
    KepObject** slot = slotAt(i);
    if (slot != nullptr && *slot != nullptr) copy->put(i, **slot);
  }
  return result;
}

unsigned long KepRArray::equals(KepArray const& other) const {
  if (other.isNull()) return 0;
  int n = size();
  if (other.size() != n) return 0;
  for (int i = 0; i < n; ++i) {
    if (!at(i).equals(other.at(i))) return 0;
  }
  return 1;
}

unsigned long KepRArray::equals(KepObject const& other) const {
  KepRObject* body = other.getRealKepObj();
  if (body == nullptr || !body->isOfType(KepClassID::Array)) return 0;
  return equals(KepArray(other));
}

int KepRArray::hashCode() const { return 0; }

void KepRArray::copy(KepArray const& other) {
  if (other.isNull() || other.getRealKepObj() == this) return;
  clear();
  int n = other.size();
  setSize(n);
  for (int i = 0; i < n; ++i) put(i, other.at(i));
}

unsigned long KepRArray::isEmpty() const { return size() == 0; }

int KepRArray::size() const { return spill != nullptr ? spill->size() : inlineCount; }

KepObject KepRArray::at(int index) const {
  KepObject** slot = slotAt(index);
  if (slot == nullptr || *slot == nullptr) return KepObject();
  return KepObject(**slot);
}

void KepRArray::put(int index, KepObject const& object) {
  KepObject** slot = slotAt(index);
  if (slot == nullptr) return;
  KepObject* old = *slot;
  *slot = slotCopy(object);
  if (old != nullptr) old->freeBridge();
}

void KepRArray::clear() { setSize(0); }

KepObject KepRArray::remove(int index) {
  KepObject** slot = slotAt(index);
  if (slot == nullptr) return KepObject();
  KepObject result = *slot != nullptr ? KepObject(**slot) : KepObject();
  releaseSlot(*slot);
  int n = size();
  if (spill != nullptr) {
    spill->_move(index + 1, index, n - index - 1);
    // The last position's pointer moved down; empty it before shrinking so that
    // a later growth finds an empty slot there.
    *spill->_getEntry(n - 1, nullptr, 0, nullptr, nullptr) = nullptr;
    spill->resize(n - 1);
  } else {
    for (int k = index; k < n - 1; ++k) inlineItems[k] = inlineItems[k + 1];
    inlineItems[n - 1] = nullptr;
    --inlineCount;
  }
  return result;
}

void KepRArray::addElement(KepObject const& object) {
  int n = size();
  setSize(n + 1);
  put(n, object);
}

void KepRArray::insert(int index, KepObject const& object) {
  int n = size();
  if (index < 0 || index > n) {
    KepDOMElement error = KepSetThreadError(KepString(index < 0 ? "Index<0" : "Index > size()"),
                                            "contain/KepRArray", __LINE__);
    error.set(KepString("Index"), index);
    error.set(KepString("Size"), n);
    return;
  }
  if (index == n) {
    addElement(object);
    return;
  }
  setSize(n + 1);
  KepObject* copy = slotCopy(object);
  if (spill == nullptr) {
    for (int k = kInlineSlots; k > index; --k) inlineItems[k] = inlineItems[k - 1];
    inlineItems[index] = copy;
  } else {
    spill->insert(index, copy);
  }
}

int KepRArray::indexOf(KepObject const& object) const {
  if (object.isNull()) return -1;
  int n = size();
  for (int i = 0; i < n; ++i) {
    KepObject** slot = slotAt(i);
    if (*slot != nullptr && (*slot)->equals(object)) return i;
  }
  return -1;
}

void KepRArray::setSize(int n) {
  if (n < 0) n = 0;
  int old = size();
  if (n > kInlineSlots && spill == nullptr) {
    // One-way switch to the chained store.
    spill = new _KepArrayImpl<KepObject*>;
    spill->resize(inlineCount);
    for (int k = 0; k < inlineCount; ++k) {
      *spill->_getEntry(k, nullptr, 0, nullptr, nullptr) = inlineItems[k];
      inlineItems[k] = nullptr;
    }
    inlineCount = 0;
  }
  if (spill != nullptr) {
    if (n < old) releaseSpilled(n, old);
    spill->resize(n);
    return;
  }
  // Still inline: n and the old count both lie in 0 ... 4.
  for (int k = n; k < old; ++k) releaseSlot(inlineItems[k]);
  for (int k = 0; k < kInlineSlots; ++k) {
    if (k >= old && k < n) inlineItems[k] = nullptr;
  }
  inlineCount = n;
}

KepString KepRArray::toString() const { return KepString(""); }

KEP_REGISTER_LIBRARY_CLASS(Array);
