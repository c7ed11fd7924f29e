#pragma once

class AbstractCanAdapter;

/// Whether the settings of an adapter become others if `edited` takes the place of `saved`.
///
/// Not what the adapters' own comparison says: for that, what the system dictates of a link does not count, and it is
/// just this that a link is updated for. Of the bitrates the rate alone counts, since name and sample point come from
/// whichever list the rate was found in, and that of the data phase only where there is one. Where the system says no
/// bitrate of a link there is nothing to be updated for, and the adapters' own comparison decides.
bool updateWouldChange(const AbstractCanAdapter &saved, AbstractCanAdapter &edited);
