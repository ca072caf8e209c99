// The umbrella header of libKep11: including it (and linking -lKep11) reaches the
// whole public interface.
#ifndef KEP_KEP_H
#define KEP_KEP_H

// Object runtime
#include "kep/base/KepBridge.h"
#include "kep/base/KepClassID.h"
#include "kep/base/KepDebugger.h"
#include "kep/base/KepDefs.h"
#include "kep/base/KepFactory.h"
#include "kep/base/KepGlobals.h"
#include "kep/base/KepInit.h"
#include "kep/base/KepLogger.h"
#include "kep/base/KepObject.h"
#include "kep/base/KepProcess.h"
#include "kep/base/KepRObject.h"
#include "kep/base/KepRSharedData.h"
#include "kep/base/KepStartupPath.h"
#include "kep/base/_KepStartupOptions.h"
#include "kep/memory/KepMemory.h"
#include "kep/memory/_KepMemoryDup.h"
#include "kep/memory/_KepMemoryTest.h"

// Text
#include "kep/base/KepBase64.h"
#include "kep/base/KepByteArray.h"
#include "kep/base/KepCharacter.h"
#include "kep/base/KepRByteArray.h"
#include "kep/base/KepRCharacter.h"
#include "kep/base/KepRString.h"
#include "kep/base/KepRStringBuffer.h"
#include "kep/base/KepRStringTokenizer.h"
#include "kep/base/KepString.h"
#include "kep/base/KepStringBuffer.h"
#include "kep/base/KepStringTokenizer.h"

// Tags
#include "kep/base/KepRTagEntry.h"
#include "kep/base/KepRTagManager.h"
#include "kep/base/KepRTagNameSpace.h"
#include "kep/base/KepTagEntry.h"
#include "kep/base/KepTagManager.h"
#include "kep/base/KepTagNameSpace.h"
#include "kep/base/KepTagRange.h"
#include "kep/base/_KepTagTables.h"

// Containers
#include "kep/contain/KepArray.h"
#include "kep/contain/KepCompareFunction.h"
#include "kep/contain/KepIntMap.h"
#include "kep/contain/KepOrderedSet.h"
#include "kep/contain/KepOrderedSetIterator.h"
#include "kep/contain/KepRArray.h"
#include "kep/contain/KepROrderedSet.h"
#include "kep/contain/KepROrderedSetIterator.h"
#include "kep/contain/_KepArrayImpl.h"
#include "kep/contain/_KepOrderedSetImpl.h"
#include "kep/contain/_KepOrderedSetIter.h"
#include "kep/contain/_KepRandom.h"
#include "kep/contain/_KepRedBlackTreeImpl.h"
#include "kep/contain/_KepRedBlackTreeNode.h"
#include "kep/contain/_KepVectorImpl.h"

// DOM and XML
#include "kep/xml/KepDOMChildNode.h"
#include "kep/xml/KepDOMElement.h"
#include "kep/xml/KepDOMNode.h"
#include "kep/xml/KepDOMParentNode.h"
#include "kep/xml/KepXMLSimpleParser.h"

// Events
#include "kep/base/KepEvent.h"

// Streams and files
#include "kep/io/KepFile.h"
#include "kep/io/KepIOStream.h"
#include "kep/io/KepPath.h"
#include "kep/io/KepRFile.h"
#include "kep/io/KepRIOStream.h"
#include "kep/io/KepRPath.h"
#include "kep/io/KepRStringBufferIOStream.h"
#include "kep/io/KepStringBufferIOStream.h"
#include "kep/io/_KepIO.h"
#include "kep/io/_KepIOBuffered.h"
#include "kep/io/_KepIODirectory.h"
#include "kep/io/_KepIOMatch.h"
#include "kep/io/_KepIOPathExtendedNonMac.h"
#include "kep/io/_KepIOUnix.h"

// Date and time
#include "kep/date/_KepDate.h"
#include "kep/date/_KepFileTime.h"

// Threads
#include "kep/base/KepRRunnable.h"
#include "kep/base/KepRThread.h"
#include "kep/base/KepRunnable.h"
#include "kep/base/KepThread.h"
#include "kep/base/_KepRunnableWrapper.h"
#include "kep/base/_KepThreadTable.h"
#include "kep/multi/_KepSemaphore.h"
#include "kep/multi/_KepThread.h"

#endif  // KEP_KEP_H
