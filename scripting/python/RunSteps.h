#pragma once

#include <QObject>
#include <QPointer>
#include <vector>

namespace runebook {

class Document;

/// The undo steps that the last run to change anything has left in the open documents, to be taken back all
/// at once as if that run had never been, as long as nothing was edited since. Main thread only.
class RunSteps : public QObject
{
    Q_OBJECT
public:
    explicit RunSteps(QObject *parent = nullptr);

    /// A run begins: notes where every history stands, that of documents which the run opens as well.
    void begin();
    /// The run is over and its steps are closed. True when it has left steps that can be taken back; not
    /// where the script itself went back in a history behind where it had found it.
    bool end();
    /// Those with steps to take back, front to back.
    QList<Document *> documents() const;
    void takeBack();

Q_SIGNALS:
    /// A document was edited or has gone: what there was can be taken back no more.
    void passed();

private:
    struct History {
        QPointer<Document> document;
        int first; ///< as many steps were there before
        int lowest; ///< as far back as the script went
    };
    void follow();
    void pass();

    std::vector<History> m_running;
    std::vector<History> m_left;
};

} // namespace runebook
