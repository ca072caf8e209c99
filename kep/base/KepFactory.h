// KepFactory: makes objects from class ids by cloning registered prototypes.
#ifndef KEP_BASE_KEPFACTORY_H
#define KEP_BASE_KEPFACTORY_H

#include "kep/base/KepClassID.h"
#include "kep/base/KepObject.h"

class KepString;
class KepDOMNode;
class KepDOMDocument;

// One row of the factory table: the class id (the key), the id of the service
// that provides the class (0 once a prototype is registered) and the heap handle
// on the prototype (null while the class is only announced).
struct KEP_API _KepRFactoryClassEntry {
  int entryClassID;
  int serviceID;
  KepObject* defaultObj;
};

// The table's order: 1 when a's class id is below b's as signed 32-bit
// integers (both are _KepRFactoryClassEntry*), else 0.
KEP_API unsigned long _KepClassEntryComparator(void* a, void* b);

// The factory keeps one table, per process, from class id to a prototype object
// (held through a heap handle) and makes new objects by the prototype's
// createAnother(). The table is an ordered set of _KepRFactoryClassEntry rows
// kept in the process shared-data store (marker, count and table in slots 7, 8
// and 9), made by the first init() and freed, with every holder left in it, by
// the last destroy(). A class that a loadable service provides is announced with
// the service's id and no prototype; the service is started on the first request.
//
// Unknown ids (other than 0x40024, which falls back to a plain object), services
// that do not register their class, and a factory that was never initialised all
// give a null handle. Registering a class again keeps the first prototype.
//
// Thread safety: every operation runs under lock 2 of the process shared-data
// store. A service's init() runs with that lock held and must not wait for a
// factory call made on another thread.
class KEP_API KepFactory {
 public:
  // Counts an initialisation; the first one makes the table. Logs
  // "Initializating KepFactory, invocation #%d, for current process".
  static void init();
  // Counts down an initialisation.
  static void destroy();

  // Registers a class by prototype: `holder` is made to target `prototype`, and
  // the table entry for prototype->getClassID() is added (or completed, when a
  // service announced the class).
  //
  // Ownership of `holder`: every registration call takes the heap handle over,
  // whatever its outcome. When the factory keeps it, it lives until the class is
  // unregistered or the last destroy(); when it does not (the class already has
  // a prototype: the first registration wins; a null prototype or body; no
  // table), the handle is freed at once with freeBridge(), which also drops the
  // reference it took on the prototype. Either way the caller must not use or
  // free `holder` after the call. (Passing a handle that already is the
  // registered holder of some class changes nothing.)
  static void registerClass(KepObject* holder, KepObject* prototype);
  // Registers a library body under `classId`: `holder` is made to target `body`
  // (taking a reference on it). Ownership of `holder` as above: a body whose only
  // reference was a rejected holder is deleted with it.
  static void registerInternalClass(int classId, KepObject* holder, void* body);
  // As above, with the id taken from the body's getClassID().
  static void registerInternalClass(KepObject* holder, void* body);
  // Announces that service `serviceId` provides `classId` (no prototype yet);
  // nothing changes when the class already has an entry. Answers 0.
  static int registerClass(int classId, int serviceId);
  // Removes the entry and frees its holder handle.
  static void unregisterClass(int classId);

  // A new object of class `classId` with its service set to `service`. `sub` is
  // accepted and not used.
  static KepObject getObjectStatic(int classId, int sub, int service);
  static KepObject getObjectStatic(int classId, int service);
  // As above with the service of `owner` (0 when `owner` is null).
  static KepObject getObjectStatic(int classId, int sub, KepObject& owner);
  static KepObject getObjectStatic(int classId, KepObject& owner);
  // As above with the class id KepProcess::nameToTag(name).
  static KepObject getObjectStatic(KepString const& name, int service);
  static KepObject getObjectStatic(KepString const& name, int sub, int service);
  // As above with the class id the node's tag (its node ID) and service 0: an
  // element named "List" gives a new list.
  static KepObject getObjectStatic(KepDOMNode& node);
  static KepObject getObjectStatic(KepDOMNode& node, int sub);

  // The process's default document: the document nodes belong to when no
  // document made them. Start-up makes the registered document prototype the
  // default; a null document before that and after the last destroy().
  static KepDOMDocument getDefaultDoc();
  // Replaces the default document (a null document clears it).
  static void setDefaultDoc(KepDOMDocument const& document);
  // 1 while there is a default document.
  static unsigned long haveDefaultDoc();

  // A new heap handle on the object (its own newBridge()).
  static KepObject* newBridge(KepObject const& object);
  static KepObject* newBridge(KepRObject const& object);
  // Frees `*p` with its freeBridge() when not null and sets `p` to null.
  static void freeBridge(KepObject const*& p);

  // Installs the hook that starts the service providing an announced class. It
  // answers true when the service was found and started (its init() is expected
  // to register the class). Without a hook, announced classes give null handles.
  using ServiceStarter = bool (*)(int serviceId);
  static void setServiceStarter(ServiceStarter starter);

  // Number of entries in the table (0 before init()).
  static int classCount();
};

// Shorthands for KepFactory::getObjectStatic.
KEP_API KepObject KepGetObject(int classId, int sub, int service);
KEP_API KepObject KepGetObject(int classId, int service);
KEP_API KepObject KepGetObject(KepString const& name, int service);
KEP_API KepObject KepGetObject(KepString const& name, int sub, int service);

// Library classes announce themselves for start-up with KEP_REGISTER_LIBRARY_CLASS
// in their source file; Kep::init makes one body of each and registers it with
// the factory. The list is walked in registration order after the start-up's own
// ordering rules.
struct KEP_API KepLibraryClass {
  int classId;
  KepRObject* (*make)();
  KepLibraryClass* next;
};
// Adds an entry to the list of library classes (called during static
// initialisation).
KEP_API void KepAddLibraryClass(KepLibraryClass* entry);
// The first entry of the list, or null.
KEP_API KepLibraryClass* KepFirstLibraryClass();

#define KEP_REGISTER_LIBRARY_CLASS(S)                                         \
  static KepLibraryClass kepLibraryClass_##S{                                 \
      KepClassID::S, []() -> KepRObject* { return new KepR##S(); }, nullptr}; \
  [[maybe_unused]] static int const kepLibraryClassAdded_##S =                \
      (KepAddLibraryClass(&kepLibraryClass_##S), 0)

#endif  // KEP_BASE_KEPFACTORY_H
