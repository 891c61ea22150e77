// Runs a fuzz target over the files of its corpus, each once, as a
// regression test in builds without libFuzzer:
//   fuzz_TARGET_corpus FOLDER...
// Exits non-zero when a file cannot be read; a fault in the target aborts.

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <cstddef>
#include <cstdint>
#include <cstdio>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

int main(int argc, char** argv)
{
    int files = 0;
    for (int i = 1; i < argc; ++i) {
        const QString argument = QString::fromLocal8Bit(argv[i]);
        QStringList paths{argument};
        if (QFileInfo(argument).isDir()) {
            paths.clear();
            for (const QString& name : QDir(argument).entryList(QDir::Files, QDir::Name))
                paths << QDir(argument).filePath(name);
        }
        for (const QString& path : paths) {
            QFile file(path);
            if (!file.open(QIODevice::ReadOnly)) {
                std::fprintf(stderr, "cannot read %s\n", qPrintable(path));
                return 1;
            }
            const QByteArray bytes = file.readAll();
            LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.constData()),
                                   static_cast<std::size_t>(bytes.size()));
            ++files;
        }
    }
    std::printf("%d inputs, no fault\n", files);
    return files > 0 ? 0 : 1;
}
