// Class ids of the library's body classes. A class id is the tag of the class's
// short name in the library's own tag namespace 4 (high 16 bits 4, low 16 bits the
// tag number), so "String" is 0x4002c. `KepRDate` (0x4e) and `KepRThread` (0x1a2)
// are tags of namespace 0; `KepRCharacter` has no constant id at all (its id is
// the tag the tag manager gives "KepCharacter" at run time).
#ifndef KEP_BASE_KEPCLASSID_H
#define KEP_BASE_KEPCLASSID_H

// One row per body class: X(Stem, id). The body class is KepR<Stem>.
// clang-format off
#define KEP_CLASS_IDS(X)                                                          \
  X(Array, 0x40000) X(Binary, 0x40001) X(Collection, 0x40002)                     \
  X(CompoundList, 0x40003) X(Credential, 0x40004) X(URL, 0x40005)                 \
  X(Dispatcher, 0x40006) X(DOMAttribute, 0x40007) X(DOMAttributeList, 0x40008)    \
  X(DOMCDATASection, 0x40009) X(DOMCharacterData, 0x4000a)                        \
  X(DOMChildNode, 0x4000b) X(DOMComment, 0x4000c) X(DOMDocument, 0x4000d)         \
  X(DOMDocumentFragment, 0x4000e) X(DOMDocumentType, 0x4000f)                     \
  X(DOMElement, 0x40010) X(DOMEntity, 0x40011) X(DOMEntityReference, 0x40012)     \
  X(DOMExternalID, 0x40013) X(DOMImplementation, 0x40015)                         \
  X(DOMNamedNodeMap, 0x40016) X(DOMNamespace, 0x40017) X(DOMNode, 0x40018)        \
  X(DOMNodeList, 0x40019) X(DOMNotation, 0x4001b) X(DOMParentNode, 0x4001c)       \
  X(DOMProcessingInstruction, 0x4001e) X(DOMText, 0x4001f) X(Filter, 0x40021)     \
  X(List, 0x40023) X(Object, 0x40024) X(Parameters, 0x40025)                      \
  X(Service, 0x40028) X(Services, 0x40029) X(Sort, 0x4002a) X(String, 0x4002c)    \
  X(StringBuffer, 0x4002d) X(StringTokenizer, 0x4002e) X(TagEntry, 0x4002f)       \
  X(TagManager, 0x40030) X(TagNameSpace, 0x40031) X(View, 0x40034)                \
  X(XMLParser, 0x40035) X(File, 0x40036) X(Path, 0x40037) X(Runnable, 0x40038)    \
  X(IOStream, 0x40039) X(Integer, 0x40043) X(TCPClient, 0x40044)                  \
  X(TCPStream, 0x40045) X(TCPServer, 0x40046) X(Listener, 0x40048)                \
  X(OrderedSet, 0x40049) X(OrderedSetIterator, 0x4004a)                           \
  X(CollectorThread, 0x4004b) X(SublistThread, 0x4004c) X(IPC, 0x4004d)           \
  X(Long, 0x4004e) X(TCPListenerThread, 0x40054) X(WorkerThread, 0x40055)         \
  X(DateFormat, 0x4005a) X(DateFields, 0x4005b) X(TimeZone, 0x4005c)              \
  X(TCPPacketStream, 0x4005d) X(TCPBufferStream, 0x4005e)                         \
  X(StringBufferIOStream, 0x4006c) X(ConnectionEntry, 0x4006d)                    \
  X(ReaderThread, 0x4006e) X(DOMRepeatingNodeList, 0x400d4)                       \
  X(Configuration, 0x400d6) X(XPointer, 0x400dc) X(ByteArray, 0x400dd)            \
  X(Event, 0x400e4) X(DOMWriter, 0x4011f)                                         \
  X(Date, 0x4e) X(Thread, 0x1a2)
// clang-format on

// KepClassID::String == 0x4002c, and so on for every row above.
namespace KepClassID {
#define KEP_CLASS_ID_ENUMERATOR(S, id) S = id,
enum : int { KEP_CLASS_IDS(KEP_CLASS_ID_ENUMERATOR) };
#undef KEP_CLASS_ID_ENUMERATOR
}  // namespace KepClassID

#endif  // KEP_BASE_KEPCLASSID_H
