#pragma once

#include "client/recording/Recording.h"

#include <vector>

/// Four players who run, jump and turn in a court by dice, as all their lines carry it: states,
/// views, keys and receipts. The same every time.
std::vector<drench::client::RecordedDatagram> madeMatch(int ticks);

/// Whether they are the same to the bit.
bool same(const drench::client::RecordedDatagram& a, const drench::client::RecordedDatagram& b);

/// A whole recording of datagrams, with the header of madeHeader().
std::string recordingOf(const std::vector<drench::client::RecordedDatagram>& datagrams);

drench::client::RecordingHeader madeHeader();
