// SPDX-License-Identifier: Apache-2.0
// The tree of pages (ISO 32000-2, 7.7.3): nodes with children, which are nodes or pages.
#include "platform/linux/pdf/PageTree.h"

#include <algorithm>
#include <optional>
#include <set>
#include <utility>
#include <vector>

namespace platform::pdf {
namespace {

// Far more than writers make, which divide by ten or so at each level.
constexpr std::size_t deepest = 64;

Object rootOf(PDFDoc& document) {
    const Object catalog = document.getXRef()->getCatalog();
    return catalog.isDict() ? catalog.dictLookup("Pages") : Object(objNull);
}

Object childrenOf(const Object& node) {
    return node.isDict() ? node.dictLookup("Kids") : Object(objNull);
}

// Some pages and some nodes lack their type.
bool isPage(const Object& object) {
    return object.isDict() && (object.dictIs("Page") ||
                               (!object.dictIs("Pages") && !object.getDict()->hasKey("Kids")));
}

std::uint64_t numberOfObjects(PDFDoc& document) {
    return static_cast<std::uint64_t>(std::max(document.getXRef()->getNumObjects(), 0));
}

// What a node says; nullopt for what no count can be.
std::optional<std::uint64_t> claimOf(const Object& node) {
    const Object count = node.dictLookup("Count");
    constexpr double most = 1U << 31U;
    if (!count.isNum() || !(count.getNum() >= 0 && count.getNum() < most)) {
        return std::nullopt;
    }
    return static_cast<std::uint64_t>(count.getNum());
}

/// Goes through all of a tree, however deep, whatever its nodes say.
class PageCounter {
public:
    explicit PageCounter(PDFDoc& document)
        : m_limit(numberOfObjects(document)) {}

    std::uint64_t countBelow(const Object& root) {
        enter(root);
        // Each page is an object, so there cannot be more of them.
        while (!m_open.empty() && m_pages < m_limit) {
            Level& level = m_open.back();
            if (level.next >= level.children.arrayGetLength()) {
                m_open.pop_back();
            } else {
                visit(level.children, level.next++);
            }
        }
        return m_pages;
    }

private:
    struct Level {
        Object children;
        int next = 0;
    };

    void enter(const Object& node) {
        Object children = childrenOf(node);
        if (children.isArray() && m_open.size() < deepest) {
            m_open.push_back({std::move(children)});
        }
    }

    void visit(const Object& children, int number) {
        const Object& child = children.arrayGetNF(number);
        const Object found = children.arrayGet(number);
        if (isPage(found)) {
            ++m_pages;
        } else if (!child.isRef() || m_seen.insert(child.getRef().num).second) {
            enter(found);
        }
    }

    std::uint64_t m_limit;
    std::uint64_t m_pages = 0;
    std::vector<Level> m_open;
    std::set<int> m_seen;
};

// Whether a node with the first child and others may well have that many pages below it: as many as
// children when those are pages, and more when they are nodes. Only the first child is looked at.
bool isCredible(std::uint64_t claim, const Object& first, std::uint64_t others) {
    if (isPage(first)) {
        return claim == others + 1;
    }
    const auto pages = first.isDict() ? claimOf(first) : std::nullopt;
    return pages && (others == 0 ? claim == *pages : claim >= *pages + others);
}

/// Looks for the first page of a tree, past nodes that have none.
class FirstPage {
public:
    std::optional<PageParts> below(const Object& node, const Object& inherited,
                                   std::size_t level = 0) {
        if (!node.isDict() || level > deepest || m_looks == 0) {
            return std::nullopt;
        }
        --m_looks;
        const Object own = node.dictLookup("Resources");
        const Object& resources = own.isDict() ? own : inherited;
        if (isPage(node)) {
            return PageParts{node.dictLookup("Contents"), resources.copy()};
        }
        const Object children = childrenOf(node);
        const int count = children.isArray() ? children.arrayGetLength() : 0;
        for (int number = 0; number < count && m_looks > 0; ++number) {
            if (auto page = below(children.arrayGet(number), resources, level + 1)) {
                return page;
            }
        }
        return std::nullopt;
    }

private:
    int m_looks = 1000;
};

} // namespace

PageTree::PageTree(PDFDoc& document, const Excerpt* excerpt)
    : m_document(document)
    , m_excerpt(excerpt)
    , m_root(rootOf(document)) {}

std::optional<std::uint64_t> PageTree::numberOfPages() const {
    if (isPage(m_root)) {
        return 1;
    }
    const Object children = childrenOf(m_root);
    if (!children.isArray() || children.arrayGetLength() == 0) {
        return 0;
    }
    const auto claim = claimOf(m_root);
    if (claim && isTrusted(*claim, children)) {
        return claim;
    }
    return m_excerpt != nullptr ? std::nullopt
                                : std::optional(PageCounter(m_document).countBelow(m_root));
}

bool PageTree::isTrusted(std::uint64_t claim, const Object& children) const {
    const auto shown = static_cast<std::uint64_t>(children.arrayGetLength());
    const std::uint64_t count =
        m_excerpt != nullptr ? m_excerpt->numberOfChildren.value_or(shown) : shown;
    const std::uint64_t objects =
        m_excerpt != nullptr ? m_excerpt->numberOfObjects : numberOfObjects(m_document);
    return claim <= objects && isCredible(claim, children.arrayGet(0), count - 1);
}

std::optional<PageParts> PageTree::firstPage() const {
    return FirstPage().below(m_root, Object(objNull));
}

} // namespace platform::pdf
