// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "fuzz/Fuzzing.h"

#include <utility>

namespace fuzzing {

/// A message as it comes from a bus (D-Bus, "Message Protocol").
struct BusMessage {
    enum class Type { call = 1, reply, error, signal };

    Type type = Type::reply;
    std::string sender;         ///< empty for none
    std::uint32_t answered = 0; ///< the number of the call; 0 for none
    std::string name;           ///< of the error, or of the method or signal
    std::string signature;      ///< empty for none
    std::string body;           ///< as it is sent

    /// Gives it the body of one text, of the type "s" or "o".
    void setText(const std::string& typeOfText, const std::string& text);
    /// As it is sent: little-endian.
    [[nodiscard]] std::string marshalled() const;
};

/// Writes values at the places where they belong.
class BusWriter {
public:
    void align(std::size_t to) { bytes.resize((bytes.size() + to - 1) / to * to); }
    void byte(std::size_t value) { bytes.push_back(static_cast<char>(value)); }
    void word(std::size_t value) {
        align(4);
        for (unsigned shift = 0; shift < 32; shift += 8) {
            byte(value >> shift & 0xFFU);
        }
    }
    void text(const std::string& value) {
        word(value.size());
        bytes.append(value).append(1, '\0');
    }
    void signature(const std::string& value) {
        byte(value.size());
        bytes.append(value).append(1, '\0');
    }
    /// What stands before the value of a header's field.
    void field(std::size_t code, const std::string& type) {
        align(8);
        byte(code);
        signature(type);
    }
    void textField(std::size_t code, const std::string& value) {
        if (!value.empty()) {
            field(code, "s");
            text(value);
        }
    }

    std::string bytes;
};

inline void BusMessage::setText(const std::string& typeOfText, const std::string& text) {
    BusWriter writer;
    writer.text(text);
    signature = typeOfText;
    body = std::move(writer.bytes);
}

inline std::string BusMessage::marshalled() const {
    BusWriter fields;
    if (type == Type::call || type == Type::signal) {
        fields.field(1, "o");
        fields.text("/");
        fields.textField(2, "org.example.Interface");
        fields.textField(3, name);
    } else if (type == Type::error) {
        fields.textField(4, name);
    }
    if (answered != 0) {
        fields.field(5, "u");
        fields.word(answered);
    }
    fields.textField(7, sender);
    if (!signature.empty()) {
        fields.field(8, "g");
        fields.signature(signature);
    }
    BusWriter message;
    for (const std::size_t value :
         {std::size_t{'l'}, static_cast<std::size_t>(type), std::size_t{0}, std::size_t{1}}) {
        message.byte(value);
    }
    message.word(body.size());
    message.word(1);
    // The fields begin at a multiple of 8, so their own places stay right.
    message.word(fields.bytes.size());
    message.bytes.append(fields.bytes);
    message.align(8);
    return message.bytes.append(body);
}

} // namespace fuzzing
