#pragma once

namespace standin
{

class Core;
struct Object;
struct PictureObject;

} // namespace standin
