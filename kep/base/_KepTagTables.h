// _KepTagTables: the built-in tag vocabulary that Kep::init loads.
#ifndef KEP_BASE_KEPTAGTABLES_H
#define KEP_BASE_KEPTAGTABLES_H

#include "kep/base/KepTagRange.h"

// One built-in table: its name, the tags start..end it is loaded at, and the
// `count` names loaded (`names[i]` gets tag start + i).
struct KEP_API _KepBuiltInTagTable {
  char const* name;
  int start;
  int end;
  int count;
  KepTagTable const* names;
};

// The built-in tables in loading order; `count` receives their number. The
// names are unique over all tables, and their positions are part of the data
// format of stored records.
KEP_API _KepBuiltInTagTable const* _KepGetBuiltInTagTables(int& count);

#endif  // KEP_BASE_KEPTAGTABLES_H
