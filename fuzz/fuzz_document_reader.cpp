// Fuzz target: the document reader on any bytes. Whatever the bytes, it
// reads a database or refuses with a reason, within bounded time, memory and
// stack; what it reads can be written again and read back.

#include "host/db/PfDbDatabase.h"
#include "host/db/PfDbDocumentFile.h"
#include "host/db/PfDbLoadReport.h"
#include "host/model/PfHostClasses.h"

#include <QBuffer>

#include <cstddef>
#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const bool registered = (PfHostRegisterClasses(), true);
    (void)registered;
    QBuffer input;
    input.setData(reinterpret_cast<const char*>(data), static_cast<int>(size));
    input.open(QIODevice::ReadOnly);
    PfDbLoadReport report;
    QString error;
    std::unique_ptr<PfDbDatabase> database = PfDbDocumentFile::Read(input, &report, &error);
    if (!database) {
        if (error.isEmpty())
            std::abort(); // a refusal always says why
        return 0;
    }
    QBuffer again;
    again.open(QIODevice::WriteOnly);
    if (!PfDbDocumentFile::Write(*database, again, &error))
        std::abort();
    again.close();
    again.open(QIODevice::ReadOnly);
    if (!PfDbDocumentFile::Read(again, nullptr, &error))
        std::abort(); // what was written must read back
    return 0;
}
