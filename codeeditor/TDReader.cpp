#include "codeeditor/TDReader.h"

#include <algorithm>

void TDReader::setString(const QString &string)
{
    m_string = string;
    m_offset = 0;
}

void TDReader::setOffset(qsizetype offset)
{
    m_offset = std::max<qsizetype>(offset, 0);
}
