#pragma once

// Result codes of host operations. 0 is success; the numeric values are part
// of the host's interface (callers compare with them), so never renumber.
namespace Pfad {
enum Error {
    eOk = 0,
    eNotImplemented = 1,
    eNotApplicable = 2,
    eInvalidInput = 3,
    eKeyNotFound = 4,
    eDuplicateKey = 5,
    eWasErased = 6,
    eNotInTransaction = 7,
    eFileError = 8,
};
}
