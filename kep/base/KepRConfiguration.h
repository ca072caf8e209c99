// KepRConfiguration: the body of KepConfiguration.
#ifndef KEP_BASE_KEPRCONFIGURATION_H
#define KEP_BASE_KEPRCONFIGURATION_H

#include "kep/base/KepConfiguration.h"
#include "kep/base/KepRObject.h"
#include "kep/xml/KepDOMDocument.h"

// Holds the document the file was read into, its document element and the
// path it came from; all null while empty. Operations are those of
// KepConfiguration.
//
// Thread safety: see KepConfiguration (the bridges bracket every operation).
class KEP_API KepRConfiguration : public KepRObject {
  KEP_BODY_IDENTITY(Configuration, KepRObject)
  KEP_BODY_CREATE_ANOTHER(Configuration)

 public:
  KepRConfiguration();

  KEP_METHODS_Configuration(KEP_DECLARE_METHOD)

      private : KepDOMDocument document;
  KepDOMElement root;
  KepString path;
};

#endif  // KEP_BASE_KEPRCONFIGURATION_H
