#pragma once

#include "page/page.h"
#include "site/sitemodel.h"

#include <functional>
#include <vector>

namespace quorvel::link {
class Module1;
}

/// What a visit to a site found, and its page.
namespace quorvel::site {

/// A setting that a readout told, or not.
struct SettingTold {
    QString title; ///< "Offset X"
    QString value; ///< in words; empty: not known
    QString why;   ///< why it is not known, one sentence
};

/// One readout of a visit.
struct Visited {
    Readout readout;
    Held held;
    QString limits;                    ///< as SiteModel::limitWords()
    bool passes = false;               ///< a limit
    QString line;                      ///< as SiteModel::lineWords()
    std::vector<SettingTold> settings; ///< empty: not asked for
};

struct Visit {
    Site site; ///< its name, port and note
    QDateTime at;
    QString port; ///< that was open; empty: none
    QString person;
    QString remark;
    QString program;
    std::vector<Visited> readouts;
    QDateTime since;                 ///< of the changes
    std::vector<ChangeMade> changes; ///< of the site's readouts
    int changesUnread = 0;           ///< as ChangesMade::unread
    QString changesUnknown;          ///< why they are not known; empty: they are
};

/// Asks a readout for all its settings but the clock. After two silent answers in a row it asks for no more.
/// @param stop  looked at before each question; may be empty.
std::vector<SettingTold> askSettings(link::Module1& module1, const Readout& readout,
                                     const std::function<bool()>& stop);

/// The visit on paper: one page where there is room. What is not known is said to be not known.
page::Page pageOf(const Visit& visit);

} // namespace quorvel::site
