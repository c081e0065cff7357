#pragma once

namespace quillmar::tunnel {

// Deletes the entries of the neighbour tables (ARP, neighbour discovery) that have no answer yet. The kernel
// repeats its question once a second. Where it asked into a link without carrier, the first packet behind its
// return would wait for the rest of that second.
void forgetUnansweredNeighbours();

}  // namespace quillmar::tunnel
