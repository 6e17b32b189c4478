// SPDX-License-Identifier: MIT
#include "korva/files/gltf/gltf_nodes.h"

#include <algorithm>
#include <optional>

namespace korva {

namespace {

constexpr std::size_t kDeepestNode = 1000;

class NodeWalk {
public:
    explicit NodeWalk(const GltfItem& root) : root_(root), nodes_(root.length("nodes")) {}

    GltfInstances walk() {
        findParents();
        for (const std::uint64_t top : topNodes())
            walkFrom(top);
        for (std::size_t i = 0; i < nodes_.size(); ++i)
            if (!nodes_[i].isReached && nodeAt(i).has("mesh")) ++found_.elsewhere;
        return std::move(found_);
    }

private:
    struct Node {
        bool hasParent = false;
        bool isReached = false;
    };
    struct Step {
        std::uint64_t node;
        std::size_t depth;
        GltfTransform parent;
    };

    [[nodiscard]] GltfItem nodeAt(std::uint64_t index) const {
        return root_.element("nodes", index, "node");
    }

    void findParents() {
        for (std::size_t i = 0; i < nodes_.size(); ++i) {
            for (const std::uint64_t child : nodeAt(i).wholes("children")) {
                const GltfItem item = nodeAt(child);
                Node& node = nodes_[static_cast<std::size_t>(child)];
                if (child == i) item.fail("it is its own child.");
                if (node.hasParent) item.fail("it has two parents.");
                node.hasParent = true;
            }
        }
        refuseCycles();
    }

    /// No node has two parents, so a node that no top node leads to is in or below a cycle.
    void refuseCycles() const {
        std::vector<std::uint64_t> waiting = nodesWithoutParent();
        std::vector<bool> isReached(nodes_.size());
        while (!waiting.empty()) {
            const std::uint64_t node = waiting.back();
            waiting.pop_back();
            isReached[static_cast<std::size_t>(node)] = true;
            const std::vector<std::uint64_t> children = nodeAt(node).wholes("children");
            waiting.insert(waiting.end(), children.begin(), children.end());
        }
        const auto lost = std::ranges::find(isReached, false);
        if (lost == isReached.end()) return;
        nodeAt(static_cast<std::uint64_t>(lost - isReached.begin()))
            .fail("it is its own descendant, or a descendant of such a node.");
    }

    [[nodiscard]] std::vector<std::uint64_t> nodesWithoutParent() const {
        std::vector<std::uint64_t> tops;
        for (std::size_t i = 0; i < nodes_.size(); ++i)
            if (!nodes_[i].hasParent) tops.push_back(i);
        return tops;
    }

    [[nodiscard]] std::vector<std::uint64_t> topNodes() const {
        const std::optional<std::uint64_t> scene = root_.whole("scene");
        if (!scene && root_.length("scenes") == 0) return nodesWithoutParent();
        return root_.element("scenes", scene.value_or(0), "scene").wholes("nodes");
    }

    void walkFrom(std::uint64_t top) {
        const GltfItem item = nodeAt(top);
        if (nodes_[static_cast<std::size_t>(top)].hasParent)
            item.fail("it is a root of the scene but has a parent.");
        std::vector<Step> waiting{{top, 1, {}}};
        while (!waiting.empty()) {
            const Step step = waiting.back();
            waiting.pop_back();
            visit(step, waiting);
        }
    }

    void visit(const Step& step, std::vector<Step>& waiting) {
        const GltfItem item = nodeAt(step.node);
        Node& node = nodes_[static_cast<std::size_t>(step.node)];
        if (node.isReached) item.fail("it is in the scene twice.");
        if (step.depth > kDeepestNode) item.fail("it is nested too deeply.");
        node.isReached = true;
        const GltfTransform transform = step.parent * transformOf(item);
        if (const std::optional<std::uint64_t> mesh = item.whole("mesh"))
            found_.instances.push_back({*mesh, item.text("name"), transform});
        std::vector<std::uint64_t> children = item.wholes("children");
        std::ranges::reverse(children);
        for (const std::uint64_t child : children)
            waiting.push_back({child, step.depth + 1, transform});
    }

    const GltfItem& root_;
    std::vector<Node> nodes_;
    GltfInstances found_;
};

}  // namespace

GltfInstances gltfInstances(const GltfItem& root) {
    if (root.length("nodes") > 0) return NodeWalk(root).walk();
    GltfInstances all;
    for (std::size_t i = 0; i < root.length("meshes"); ++i)
        all.instances.push_back({i, "", {}});
    return all;
}

}  // namespace korva
