// The comparison function shared by the ordered containers and the vector sort.
#ifndef KEP_CONTAIN_KEPCOMPAREFUNCTION_H
#define KEP_CONTAIN_KEPCOMPAREFUNCTION_H

// Answers non-zero exactly when `a` is ordered strictly before `b`. Two keys are
// equal when neither is before the other; there is no separate equality test.
// The function must be a strict weak order and must not change the container it
// is called from.
using KepCompareFunction = unsigned long (*)(void* a, void* b);

#endif  // KEP_CONTAIN_KEPCOMPAREFUNCTION_H
