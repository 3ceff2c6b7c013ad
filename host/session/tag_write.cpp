#include "host/session/tag_write.h"

#include "host/session/request_ranges.h"

namespace kmr {

WriteResult writeTag(Session &session, const Tag &tag, const Values &values)
{
    auto next = values.begin();
    for (const ElementRange &run : writeRanges({tag}, session.groupLimit())) {
        const RequestResult result = session.write(run, Values(next, next + run.count));
        if (!result.isDone()) {
            const QString place =
                QString("%1#%2").arg(run.station).arg(elementName(run.area, run.first));
            return {result, tag.count > 1 ? place : QString()};
        }
        next += run.count;
    }
    return {{RequestResult::Outcome::Done, {}}, {}};
}

QString whyNotWritable(const Tag &tag)
{
    if (tag.kind == ElementKind::WordBit) {
        return QString("%1 can't be written: the controller has no write of single bits of %2 "
                       "words; write the whole word")
            .arg(tag.text, tag.elements.area);
    }
    return tag.isWritable
               ? QString()
               : QString("%1 can't be written: %2 are inputs").arg(tag.text, tag.elements.area);
}

} // namespace kmr
