#pragma once

#include "MemoryStreams.h"
#include "Wire.h"
#include "remote/Fields.h"

#include <type_traits>
#include <vector>

// A kind of reply, and what a program can do with one without knowing its fields.
struct ReplyClass
{
    std::string code;
    // Reads a reply and returns all its fields as the parameters that would make it again, in a fixed order.
    wire::Params (*read)(Merrow::CommandInputStream& in);
    // Reads any reply and returns a parameter with something in it for each field.
    wire::Params (*examples)(Merrow::CommandInputStream& in);
};

// Those of src/remote, which CMake finds there.
const std::vector<ReplyClass>& replyClasses();

template <class Field>
constexpr bool holdsItems = requires(const Field& field)
{
    *field.front();
};

// The parameters that `encode` makes of an object's fields, those that it inherits included.
template <class Object, class Encode>
wire::Params parametersOf(Object& object, Encode encode)
{
    wire::Params all;
    object.anyField([&](Merrow::Tag tag, const auto& field) {
        all.emplace_back(std::string{static_cast<char>(tag >> 8), static_cast<char>(tag)}, encode(field));
        return false;
    });
    if constexpr (requires { typename Object::Inherited; }) {
        const wire::Params inherited = parametersOf(static_cast<typename Object::Inherited&>(object), encode);
        all.insert(all.end(), inherited.begin(), inherited.end());
    }
    return all;
}

template <class Field>
std::string valueOf(const Field& field)
{
    if constexpr (std::is_integral_v<Field>) {
        return wire::integer(field, sizeof field);
    } else if constexpr (std::is_same_v<Field, double>) {
        return wire::float64(field);
    } else if constexpr (std::is_same_v<Field, std::string>) {
        return field;
    } else if constexpr (std::is_same_v<Field, StringMap>) {
        std::vector<std::string> texts;
        for (const auto& [key, value] : field) {
            texts.insert(texts.end(), {key, value});
        }
        return wire::sequence(texts);
    } else if constexpr (holdsItems<Field>) {
        std::vector<std::string> items;
        for (const auto& item : field) {
            items.push_back(wire::parameters(parametersOf(*item, [](const auto& each) { return valueOf(each); })));
        }
        return wire::sequence(items);
    } else {
        return wire::sequence(field);
    }
}

template <class Field>
std::string exampleOf(const Field&)
{
    if constexpr (std::is_arithmetic_v<Field>) {
        return valueOf(Field{1});
    } else if constexpr (holdsItems<Field>) {
        MemoryInput nothing("");
        typename Field::value_type::element_type item(nothing, 0);
        return wire::sequence({wire::parameters(parametersOf(item, [](const auto& e) { return exampleOf(e); })), ""});
    } else {
        return wire::sequence({"key", "value", "other", ""}); // a text, an array or a map
    }
}

template <class Reply>
wire::Params readFields(Merrow::CommandInputStream& in)
{
    Reply reply(in);
    return parametersOf(reply, [](const auto& field) { return valueOf(field); });
}

template <class Reply>
wire::Params readExamples(Merrow::CommandInputStream& in)
{
    Reply reply(in);
    return parametersOf(reply, [](const auto& field) { return exampleOf(field); });
}

template <class Reply>
ReplyClass replyClass(const char* code)
{
    return {code, readFields<Reply>, readExamples<Reply>};
}
