// Every mix walk, templated on the arithmetic vocabulary.
#pragma once
