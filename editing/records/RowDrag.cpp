#include "editing/records/RowDrag.h"

#include <QCoreApplication>
#include <QDataStream>
#include <QIODevice>
#include <QMimeData>

namespace runebook {

using namespace Qt::StringLiterals;

namespace {

constexpr quint8 kArchiveVersion = 2;

} // namespace

QString RowDrag::type()
{
    return u"org.runebook.RSRTVArrayController"_s;
}

quint64 RowDrag::nextNumber()
{
    static quint64 last = 0;
    return ++last;
}

std::unique_ptr<QMimeData> RowDrag::dataOf(const IndexSet &rows) const
{
    QByteArray bytes;
    QDataStream stream(&bytes, QIODevice::WriteOnly);
    stream.setVersion(QDataStream::Qt_6_4);
    stream << kArchiveVersion << qint64(QCoreApplication::applicationPid()) << m_number
           << quint64(rows.size());
    for (const qsizetype row : rows)
        stream << qint64(row);
    auto data = std::make_unique<QMimeData>();
    data->setData(type(), bytes);
    return data;
}

IndexSet RowDrag::rowsOf(const QMimeData &data) const
{
    const QByteArray bytes = data.data(type());
    QDataStream stream(bytes);
    stream.setVersion(QDataStream::Qt_6_4);
    quint8 version = 0;
    qint64 process = 0;
    quint64 source = 0;
    quint64 count = 0;
    stream >> version >> process >> source >> count;
    if (version != kArchiveVersion || process != QCoreApplication::applicationPid() || source != m_number)
        return {};
    std::vector<qsizetype> rows;
    for (qint64 row = 0; count > 0 && stream.status() == QDataStream::Ok; --count) {
        stream >> row;
        rows.push_back(row);
    }
    return stream.status() == QDataStream::Ok ? IndexSet(std::move(rows)) : IndexSet();
}

} // namespace runebook
