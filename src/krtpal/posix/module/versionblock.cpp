#include "krtpal/posix/module/versionblock.h"

#include "krtpal/common/text.h"
#include "krtpal/posix/module/modulefile.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <cwctype>
#include <optional>

namespace krtpal::posix {

namespace {

// A node has three 16-bit numbers, its key with a NUL, and the value and the children, each at the next
// multiple of 4. Offsets are from the start of the tree.
struct Node {
    std::size_t end;
    std::u16string key;
    std::size_t value;
    std::size_t valueBytes;
    bool isText;
    std::size_t children;
};

// Precedes the tree in the callers' form.
struct Preface {
    std::uint32_t treeBytes;
    std::uint32_t texts; // number of Text structures after the tree
};

struct Text {
    std::uint32_t value; // offset of the value in the tree
    std::uint32_t at;    // offset of the wide text in the block
    std::uint32_t length;
};

constexpr std::size_t kNodeHeader = 6;
constexpr std::size_t kUnit = sizeof(char16_t);

constexpr std::size_t Padded(std::size_t offset) {
    return (offset + 3) & ~std::size_t{3};
}

std::size_t Number(const unsigned char* tree, std::size_t offset) {
    return tree[offset] | static_cast<std::size_t>(tree[offset + 1]) << 8;
}

// Returns the node at an offset. No part of it extends beyond `end`, whatever its lengths are.
std::optional<Node> ReadNode(const unsigned char* tree, std::size_t offset, std::size_t end) {
    if (offset + kNodeHeader > end) {
        return std::nullopt;
    }
    const std::size_t length = Number(tree, offset);
    const std::size_t valueLength = Number(tree, offset + 2);
    if (length < kNodeHeader) {
        return std::nullopt;
    }
    Node node{};
    node.end = std::min(offset + length, end);
    node.isText = Number(tree, offset + 4) == 1;
    std::size_t at = offset + kNodeHeader;
    for (;; at += kUnit) {
        if (at + kUnit > node.end) {
            return std::nullopt;
        }
        const auto unit = static_cast<char16_t>(Number(tree, at));
        if (unit == 0) {
            break;
        }
        node.key += unit;
    }
    node.value = std::min(Padded(at + kUnit), node.end);
    node.valueBytes = std::min(node.isText ? valueLength * kUnit : valueLength, node.end - node.value);
    node.children = Padded(node.value + node.valueBytes);
    return node;
}

// Calls `visit(node)` for the nodes from `offset` to `end`, until it returns true.
template <class Visit>
void ForEachNode(const unsigned char* tree, std::size_t offset, std::size_t end, Visit visit) {
    while (const std::optional<Node> node = ReadNode(tree, offset, end)) {
        if (visit(*node)) {
            return;
        }
        offset = Padded(node->end);
    }
}

bool IsSameKey(std::u16string_view key, std::wstring_view wanted) {
    return std::equal(key.begin(), key.end(), wanted.begin(), wanted.end(), [](char16_t a, wchar_t b) {
        return std::towlower(static_cast<wint_t>(a)) == std::towlower(static_cast<wint_t>(b));
    });
}

// Returns the values of the string tables. All of them are texts, although some compilers do not mark them
// so.
std::vector<Text> CollectTexts(const unsigned char* tree, const Node& root) {
    std::vector<Text> texts;
    const auto addString = [&](const Node& string) {
        texts.push_back({static_cast<std::uint32_t>(string.value), 0,
                         static_cast<std::uint32_t>(string.valueBytes / kUnit)});
        return false;
    };
    const auto addTable = [&](const Node& table) {
        ForEachNode(tree, table.children, table.end, addString);
        return false;
    };
    ForEachNode(tree, root.children, root.end, [&](const Node& child) {
        if (IsSameKey(child.key, L"StringFileInfo")) {
            ForEachNode(tree, child.children, child.end, addTable);
        }
        return false;
    });
    return texts;
}

std::wstring WideText(const unsigned char* tree, const Text& text) {
    Utf16String units(text.length, u'\0');
    std::memcpy(units.data(), tree + text.value, text.length * kUnit);
    return DecodeUtf16(units);
}

// Removes the first name from a list and returns it. Backslashes separate the names.
std::wstring_view TakeName(std::wstring_view* names) {
    names->remove_prefix(std::min(names->find_first_not_of(L'\\'), names->size()));
    const std::wstring_view name = names->substr(0, names->find(L'\\'));
    names->remove_prefix(name.size());
    return name;
}

} // namespace

std::vector<unsigned char> ExpandVersionBlock(const std::vector<unsigned char>& stored) {
    const std::optional<Node> root = ReadNode(stored.data(), 0, stored.size());
    if (!root || !IsSameKey(root->key, L"VS_VERSION_INFO")) {
        return {};
    }
    std::vector<Text> texts = CollectTexts(stored.data(), *root);
    const Preface preface{static_cast<std::uint32_t>(root->end), static_cast<std::uint32_t>(texts.size())};
    const std::size_t table = sizeof(preface) + Padded(root->end);
    std::vector<unsigned char> block(table + texts.size() * sizeof(Text));
    std::memcpy(block.data(), &preface, sizeof(preface));
    std::memcpy(block.data() + sizeof(preface), stored.data(), root->end);
    for (std::size_t i = 0; i < texts.size(); ++i) {
        const std::wstring wide = WideText(stored.data(), texts[i]);
        texts[i].at = static_cast<std::uint32_t>(block.size());
        texts[i].length = static_cast<std::uint32_t>(wide.size());
        const auto* const bytes = reinterpret_cast<const unsigned char*>(wide.c_str());
        block.insert(block.end(), bytes, bytes + (wide.size() + 1) * sizeof(wchar_t));
        std::memcpy(block.data() + table + i * sizeof(Text), &texts[i], sizeof(Text));
    }
    return block;
}

VersionValue FindVersionValue(const void* block, std::wstring_view name) {
    const auto* const bytes = static_cast<const unsigned char*>(block);
    Preface preface{};
    std::memcpy(&preface, bytes, sizeof(preface));
    const unsigned char* const tree = bytes + sizeof(preface);

    std::optional<Node> node = ReadNode(tree, 0, preface.treeBytes);
    for (std::wstring_view part = TakeName(&name); node && !part.empty(); part = TakeName(&name)) {
        std::optional<Node> child;
        ForEachNode(tree, node->children, node->end, [&](const Node& each) {
            if (IsSameKey(each.key, part)) {
                child = each;
            }
            return child.has_value();
        });
        node = child;
    }
    if (!node) {
        return {nullptr, 0};
    }
    const unsigned char* const table = tree + Padded(preface.treeBytes);
    for (std::uint32_t i = 0; i < preface.texts; ++i) {
        Text text{};
        std::memcpy(&text, table + i * sizeof(Text), sizeof(text));
        if (text.value == node->value) {
            return {bytes + text.at, text.length};
        }
    }
    return {tree + node->value, static_cast<unsigned>(node->valueBytes)};
}

} // namespace krtpal::posix
