#ifndef ZVUTIL_MBUTIL_STRINGS_KERNELS_H
#define ZVUTIL_MBUTIL_STRINGS_KERNELS_H

#include "../jaconv/character_blocks.h"

namespace zv {

// The walks of character_blocks.h over long texts, for vectors of 32 bytes where the processor has
// them.
#ifdef ZVUTIL_WIDE_KERNELS
template <ByteRanges kLeads>
const Byte* wide_run_of_leads(const Byte* first, const Byte* p);
template <PairRanges kPairs>
const Byte* wide_skip_well_formed(const Byte* p, size_t left);
#else
template <ByteRanges kLeads>
constexpr auto wide_run_of_leads = run_of_leads<kLeads>;
template <PairRanges kPairs>
constexpr auto wide_skip_well_formed = skip_well_formed<kPairs>;
#endif

} // namespace zv

#endif
