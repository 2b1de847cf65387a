#include "line/linefile.h"

#include "files/lines.h"

#include <QFile>

namespace quorvel::line {

bool openForLines(QFile& file)
{
    const bool cutOff = files::isCutOff(file.filesystemFileName());
    return file.open(QIODevice::WriteOnly | QIODevice::Append | QIODevice::Unbuffered) &&
           (!cutOff || file.write("\n") == 1);
}

} // namespace quorvel::line
