// The randomisation bootstrap of the vesk tool: shuffled gene images and the best log probability per pass.
#ifndef VESK_TOOLS_BOOTSTRAP_H
#define VESK_TOOLS_BOOTSTRAP_H

#include <vector>

class ClassMembers;
class VarClasses;

// State that carries over between passes: the slot permutation and each gene's image.
struct BootstrapState {
    std::vector<int> slots; // starts 0, 1, 2, ... over the chip lines
    std::vector<int> image; // per variable, -1 until a pass gives it an image
};

void bootstrap_init(BootstrapState& st, int chip_lines, int n_vars);

// One shuffle step of a pass: rewrites images while walking the slots from the top.
// The walk writes images during the swaps, so it is not a uniform permutation.
void bootstrap_shuffle(BootstrapState& st, const std::vector<int>& chip_ids);

// Runs passes [0, passes) and appends each pass's best value below `ceiling` to `kept`.
// Classes are visited per set through the set's non-zero bytes.
void bootstrap_reference(const VarClasses& classes, const std::vector<std::vector<int>>& sets,
                         const std::vector<int>& chip_ids, int n_vars, int passes, float ceiling,
                         BootstrapState& st, std::vector<float>& kept);

// The same passes with the same draws over the same classes as member lists, reached with less
// work: each set member's image visits
// only the classes that hold it, log-binomials come from a table of log-gamma values, and the
// passes of a batch are evaluated on `threads` threads once their images are drawn. Gives the
// same `kept`, state and trace as bootstrap_reference.
void bootstrap_fast(const ClassMembers& classes, const std::vector<std::vector<int>>& sets,
                    const std::vector<int>& chip_ids, int n_vars, int passes, float ceiling,
                    BootstrapState& st, std::vector<float>& kept, int threads);

#endif
