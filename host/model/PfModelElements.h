#pragma once

#include <QString>

class PfDbElement;
class PfDbObject;

// What of a model space is the model: the elements the view draws, as
// opposed to animation records and key frames that live beside them.
namespace PfModelElements {
// The object as an element of the model, or null.
const PfDbElement* Of(const PfDbObject* object);
// What an element is, for grouping and linking: its type property, else
// what kind of element it is.
QString KindOf(const PfDbElement* element);
} // namespace PfModelElements
